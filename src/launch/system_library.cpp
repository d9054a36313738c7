#include "launch/system_library.h"

#include "launch/system_directory.h"

namespace vok {

HMODULE loadSystemLibrary(const char* fileName) {
    return LoadLibraryA(pathInSystemDirectory(fileName).text());
}

}  // namespace vok
