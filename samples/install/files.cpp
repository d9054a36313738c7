#include "files.h"

#include <vok/companion.h>
#include <vok/config_library.h>

#include <cstdio>
#include <string>
#include <vector>

#include "common/machine.h"
#include "common/options.h"

namespace vok::sample {

std::vector<std::string> modelFiles() {
    return {VOK_MODEL_PREFIX "vok.dll", VOK_MODEL_PREFIX VOK_CONFIG_LIBRARY_FILE,
            VOK_MODEL_PREFIX VOK_DRAL_EXE, VOK_MODEL_PREFIX VOK_NEMB_EXE};
}

bool copyFile(const std::string& name, const std::string& from, const std::string& to) {
    const std::string target = to + "\\" + name;
    if (CopyFileA((from + "\\" + name).c_str(), target.c_str(), FALSE) == 0) {
        const DWORD error = GetLastError();
        complain(withError("can't copy " + name + " to " + to, error));
        return false;
    }
    std::printf("file            %s\n", target.c_str());
    return true;
}

bool deleteFile(const std::string& path) {
    if (DeleteFileA(path.c_str()) != 0)
        return true;
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
        return true;
    complain(withError("can't delete " + path, error));
    return false;
}

bool fileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void makeFolder(const std::string& path) {
    CreateDirectoryA(path.c_str(), nullptr);
}

}  // namespace vok::sample
