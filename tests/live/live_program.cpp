#include "live_program.h"

#include <windows.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {
namespace {

struct Release {
    std::string_view name;
    DWORD platform;
    DWORD major;
    DWORD minor;
};

/// win10 is 6.2 to a program that does not declare that it knows better.
constexpr std::array<Release, 7> releases{{{"win98", VER_PLATFORM_WIN32_WINDOWS, 4, 10},
                                           {"nt40", VER_PLATFORM_WIN32_NT, 4, 0},
                                           {"win2k", VER_PLATFORM_WIN32_NT, 5, 0},
                                           {"winxp", VER_PLATFORM_WIN32_NT, 5, 1},
                                           {"win2003", VER_PLATFORM_WIN32_NT, 5, 2},
                                           {"win7", VER_PLATFORM_WIN32_NT, 6, 1},
                                           {"win10", VER_PLATFORM_WIN32_NT, 6, 2}}};

const Release& release() {
    for (const Release& known : releases) {
        if (known.name == VOK_LIVE_VERSION)
            return known;
    }
    return releases.back();
}

}  // namespace

std::string liveVersion() {
    return VOK_LIVE_VERSION;
}

std::string livePrefix() {
    return VOK_LIVE_PREFIX;
}

std::string toText(Route route) {
    return route == Route::Pipe ? "Pipe" : "Message";
}

std::vector<Route> liveRoutes() {
    const Release& system = release();
    const bool pipes = system.major > 5 || (system.major == 5 && system.minor > 0);
    return pipes ? std::vector{Route::Message, Route::Pipe} : std::vector{Route::Message};
}

std::string wrongVersion() {
    OSVERSIONINFOA info{};
    info.dwOSVersionInfoSize = sizeof info;
    GetVersionExA(&info);
    const Release& system = release();
    if (info.dwPlatformId == system.platform && info.dwMajorVersion == system.major &&
        info.dwMinorVersion == system.minor)
        return {};
    return "platform " + std::to_string(info.dwPlatformId) + ", version " +
           std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion) +
           " instead of " + liveVersion();
}

}  // namespace vok::test
