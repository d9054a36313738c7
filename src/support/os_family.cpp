#include "support/os_family.h"

#include <windows.h>

namespace vok {

OsFamily GetOsFamily() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    // Asked for and dropped: a call that this function has always made.
    GetLastError();
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) {
        return family9x;
    }
    if (version.dwMajorVersion == 5) {
        return version.dwMinorVersion == 0 ? familyNT50 : familyNT51;
    }
    return version.dwMajorVersion < 5 ? familyNT4 : familyNT6;
}

}  // namespace vok
