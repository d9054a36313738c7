#include "search_order.h"

#include <windows.h>

#include <array>
#include <string>
#include <vector>

#include "launch/system_library.h"
#include "support/procedure.h"

namespace vok::doctor {

namespace {

using SetDefaultDllDirectoriesFn = BOOL(WINAPI*)(DWORD);
using AddDllDirectoryFn = void*(WINAPI*)(const wchar_t*);

constexpr DWORD searchUserDirectories = 0x400;
constexpr DWORD searchSystemDirectory = 0x800;

std::vector<std::wstring> foldersOfThePath() {
    std::vector<wchar_t> path(GetEnvironmentVariableW(L"PATH", nullptr, 0) + 1);
    GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size()));
    std::vector<std::wstring> folders;
    std::wstring rest = path.data();
    while (!rest.empty()) {
        const std::size_t end = rest.find(L';');
        if (end != 0) {
            folders.push_back(rest.substr(0, end));
        }
        rest = end == std::wstring::npos ? std::wstring() : rest.substr(end + 1);
    }
    return folders;
}

}  // namespace

bool searchLikeTheSpooler() {
    const HMODULE kernel = GetModuleHandleA("kernel32");
    const auto setDefault =
        procedure<SetDefaultDllDirectoriesFn>(kernel, "SetDefaultDllDirectories");
    const auto add = procedure<AddDllDirectoryFn>(kernel, "AddDllDirectory");
    if (setDefault == nullptr || add == nullptr ||
        setDefault(searchSystemDirectory | searchUserDirectories) == 0) {
        return false;
    }
    std::array<wchar_t, MAX_PATH> windows{};
    GetWindowsDirectoryW(windows.data(), static_cast<UINT>(windows.size()));
    add(windows.data());
    for (const std::wstring& folder : foldersOfThePath()) {
        add(folder.c_str());
    }
    return true;
}

}  // namespace vok::doctor
