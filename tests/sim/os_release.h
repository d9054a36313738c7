// The systems that the library runs on, as GetVersionExA describes them.
#pragma once
#include <windows.h>

#include <array>
#include <ostream>

namespace vok::test {

struct OsRelease {
    const char* name;
    DWORD platform;
    DWORD major;
    DWORD minor;
    DWORD build;
    bool is9x() const { return platform == VER_PLATFORM_WIN32_WINDOWS; }
    bool isNt() const { return platform == VER_PLATFORM_WIN32_NT; }
    // Whether this is version major.minor of the NT family, or a later one.
    bool isNtFrom(DWORD fromMajor, DWORD fromMinor) const {
        return isNt() && (major > fromMajor || (major == fromMajor && minor >= fromMinor));
    }
};

inline std::ostream& operator<<(std::ostream& out, const OsRelease& os) {
    return out << os.name;
}

namespace os {
inline constexpr OsRelease win95{"win95", 1, 4, 0, 950};
inline constexpr OsRelease win98{"win98", 1, 4, 10, 2222};
inline constexpr OsRelease winMe{"winMe", 1, 4, 90, 3000};
inline constexpr OsRelease nt40{"nt40", 2, 4, 0, 1381};
inline constexpr OsRelease win2000{"win2000", 2, 5, 0, 2195};
inline constexpr OsRelease winXp{"winXp", 2, 5, 1, 2600};
inline constexpr OsRelease win2003{"win2003", 2, 5, 2, 3790};
inline constexpr OsRelease win7{"win7", 2, 6, 1, 7601};
inline constexpr OsRelease win10{"win10", 2, 10, 0, 19045};
inline constexpr std::array all{win95, win98, winMe, nt40, win2000, winXp, win2003, win7, win10};
inline constexpr std::array all9x{win95, win98, winMe};
inline constexpr std::array allNt{nt40, win2000, winXp, win2003, win7, win10};
// Those that may reach a companion by a pipe.
inline constexpr std::array allWithPipes{winXp, win2003, win7, win10};
// The NT ones that never do.
inline constexpr std::array allWithoutPipes{nt40, win2000};
}  // namespace os

}  // namespace vok::test
