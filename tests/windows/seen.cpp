#include "windows/seen.h"

#include <windows.h>

#include <cstdio>
#include <string>

namespace vok::test {

std::string wineVersion() {
    const auto version = reinterpret_cast<const char*(CDECL*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version")));
    return version != nullptr ? version() : "";
}

void seenOnWindows(const char* row, const std::string& what) {
    std::printf("seen on Windows: %s | %s\n", row, what.c_str());
}

}  // namespace vok::test
