#include "machine.h"

#include <windows.h>
#include <winspool.h>

#include <array>
#include <string>

namespace vok::sample {
namespace {

OSVERSIONINFOA version() {
    OSVERSIONINFOA info{};
    info.dwOSVersionInfoSize = sizeof info;
    GetVersionExA(&info);
    return info;
}

}  // namespace

bool is9x() {
    return version().dwPlatformId == VER_PLATFORM_WIN32_WINDOWS;
}

bool isAdministrator() {
    if (is9x())
        return true;
    std::array<BYTE, SECURITY_MAX_SID_SIZE> administrators{};
    DWORD size = static_cast<DWORD>(administrators.size());
    BOOL member = FALSE;
    return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size) !=
               0 &&
           CheckTokenMembership(nullptr, administrators.data(), &member) != 0 && member != FALSE;
}

std::string systemDirectory() {
    std::array<char, MAX_PATH> path{};
    GetSystemDirectoryA(path.data(), static_cast<UINT>(path.size()));
    return path.data();
}

std::string driverDirectory() {
    std::array<char, MAX_PATH> path{};
    DWORD needed = 0;
    if (GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(path.data()),
                                   static_cast<DWORD>(path.size()), &needed) == 0)
        return {};
    if (is9x())
        return path.data();
    return path.data() + std::string(version().dwMajorVersion < 5 ? "\\2" : "\\3");
}

std::string companionDirectory() {
    return is9x() ? systemDirectory() : driverDirectory();
}

std::string withError(const std::string& what, unsigned long error) {
    return what + " (error " + std::to_string(error) + ")";
}

}  // namespace vok::sample
