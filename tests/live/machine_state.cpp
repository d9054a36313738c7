#include "live/machine_state.h"

#include <string>
#include <vector>

namespace vok::test {

namespace {

constexpr DWORD nameRoom = 16384;

void collectValues(HKEY key, const std::string& path, State& state) {
    std::vector<char> name(nameRoom);
    std::vector<BYTE> data;
    for (DWORD index = 0;; ++index) {
        DWORD nameSize = nameRoom;
        DWORD type = 0;
        DWORD size = 0;
        if (RegEnumValueA(key, index, name.data(), &nameSize, nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS) {
            return;
        }
        data.assign(size, 0);
        RegQueryValueExA(key, name.data(), nullptr, &type, data.data(), &size);
        state[path + "\\" + name.data() + " ="] =
            std::to_string(type) + ":" + std::string(data.begin(), data.end());
    }
}

void collect(HKEY root, const std::string& path, State& state) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return;
    }
    state[path] = "key";
    collectValues(key, path, state);
    std::vector<char> name(nameRoom);
    for (DWORD index = 0;; ++index) {
        DWORD nameSize = nameRoom;
        if (RegEnumKeyExA(key, index, name.data(), &nameSize, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            break;
        }
        collect(root, path + "\\" + name.data(), state);
    }
    RegCloseKey(key);
}

std::string number(DWORD high, DWORD low) {
    return std::to_string((ULONGLONG{high} << 32) | low);
}

}  // namespace

State registryBelow(HKEY root, const std::string& path) {
    State state;
    collect(root, path, state);
    return state;
}

State filesIn(const std::string& folder) {
    State state;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return state;
    }
    do {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        state[found.cFileName] = isFolder ? "folder"
                                          : number(found.nFileSizeHigh, found.nFileSizeLow) +
                                                " bytes, " +
                                                number(found.ftLastWriteTime.dwHighDateTime,
                                                       found.ftLastWriteTime.dwLowDateTime);
    } while (FindNextFileA(search, &found) != 0);
    FindClose(search);
    return state;
}

}  // namespace vok::test
