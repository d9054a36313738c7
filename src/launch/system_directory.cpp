#include "launch/system_directory.h"

namespace vok {

NameBuffer pathInSystemDirectory(const char* fileName) {
    NameBuffer path;
    GetSystemDirectoryA(path.data(), NameBuffer::size);
    path.terminate();
    path << "\\" << fileName;
    return path;
}

}  // namespace vok
