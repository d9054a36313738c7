// The calls by which the library asks for the console's session.
#pragma once

#include <string>

#include "sim/sim.h"

namespace vok::test {

inline const std::string systemDirectoryLine =
    R"(GetSystemDirectoryA(out, 260) = 19 -> "C:\WINDOWS\system32")";

inline const Lines consoleSessionLines = {
    systemDirectoryLine,
    R"(LoadLibraryA("C:\WINDOWS\system32\wtsapi32.dll") = wtsapi32)",
    systemDirectoryLine,
    R"(LoadLibraryA("C:\WINDOWS\system32\kernel32.dll") = kernel32)",
    R"(GetProcAddress(wtsapi32, "WTSQueryUserToken") = 0 -> found)",
    R"(GetProcAddress(kernel32, "WTSGetActiveConsoleSessionId") = 0 -> found)",
    "WTSGetActiveConsoleSessionId() = 1"};

}  // namespace vok::test
