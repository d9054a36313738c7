#include "support/os_version.h"

#include <windows.h>

#include <cstdint>
#include <optional>

#include "support/exception.h"
#include "support/procedure.h"

namespace vok {

namespace {

OSVERSIONINFOEXA record;

// Not a static of its function: the runtime's lock for those leaves a handle behind at each unload.
constinit std::optional<OsVersion> instance;

void read(DWORD size, const char* failure, std::uint32_t line) {
    record.dwOSVersionInfoSize = size;
    if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)) == 0) {
        const DWORD error = GetLastError();
        throw Win32Exception(failure, error, "OsVersion", line);
    }
}

// An exception that leaves static initialisation hangs the system's loader, so it ends here and
// the entry point fails the load.
bool readAtLoad() noexcept {
    try {
        instance.emplace();
        return true;
    } catch (...) {
        return false;
    }
}

const bool readSucceeded = readAtLoad();

}  // namespace

OsVersion::OsVersion() {
    record = {};
    read(sizeof(OSVERSIONINFOA), "OsVersion::OsVersion(): GetVersionEx failed", 221);
    if (isNT5OrLater()) {
        read(sizeof(OSVERSIONINFOEXA),
             "OsVersion::OsVersion(): GetVersionEx failed with OSVERSIONINFOEX", 231);
    }
}

const OsVersion& OsVersion::getInstance() {
    return *instance;
}

bool OsVersion::wasReadAtLoad() {
    return readSucceeded;
}

bool OsVersion::isNT() const {
    return record.dwPlatformId == VER_PLATFORM_WIN32_NT;
}

bool OsVersion::isNT5OrLater() const {
    return isNT() && record.dwMajorVersion >= 5;
}

// The 4.10, 4.90 and 5.x tests don't look at the platform.
OsVersion::Code OsVersion::getVersion() const {
    const DWORD platform = record.dwPlatformId;
    const DWORD major = record.dwMajorVersion;
    const DWORD minor = record.dwMinorVersion;
    if (platform == VER_PLATFORM_WIN32_WINDOWS && major == 4 && minor == 0) {
        return Win95;
    }
    if (major == 4 && minor == 10) {
        return Win98;
    }
    if (major == 4 && minor == 90) {
        return WinMe;
    }
    if (platform == VER_PLATFORM_WIN32_NT && major == 4 && minor == 0) {
        return WinNT4;
    }
    if (major != 5) {
        return Unknown;
    }
    switch (minor) {
        case 0:
            return Win2000;
        case 1:
            return WinXP;
        case 2:
            return Win2003;
        default:
            return Unknown;
    }
}

bool OsVersion::isWow64() const {
    using IsWow64ProcessFn = BOOL(WINAPI*)(HANDLE, BOOL*);
    const HMODULE kernel = GetModuleHandleA("kernel32");
    if (kernel == nullptr) {
        return false;
    }
    const auto isWow64Process = procedure<IsWow64ProcessFn>(kernel, "IsWow64Process");
    if (isWow64Process == nullptr) {
        return false;
    }
    BOOL ignored = FALSE;
    return isWow64Process(GetCurrentProcess(), &ignored) != 0;
}

}  // namespace vok
