// Which Windows the support classes run on.
#pragma once

#include <cstdint>

namespace vok {

// Read once, when the library is loaded, and kept for the life of the process. The queries can't
// fail. (The choice between the NT and the 9x variant of an operation is GetOsFamily's.)
class OsVersion {
  public:
    enum Code : std::uint32_t {
        Unknown = 0,
        Win95 = 1,
        Win98 = 2,
        WinMe = 3,
        WinNT4 = 4,
        Win2000 = 5,
        WinXP = 6,
        Win2003 = 7,
    };

    // Reads the version from the system. Throws Win32Exception.
    OsVersion();

    static const OsVersion& getInstance();

    // False when the version couldn't be read: the library must not be used then.
    static bool wasReadAtLoad();

    bool isNT() const;
    bool isNT5OrLater() const;
    Code getVersion() const;

    // Whether the 64-bit registry view can be asked for: true wherever the system has a working
    // IsWow64Process, whatever that function answers.
    bool isWow64() const;
};

}  // namespace vok
