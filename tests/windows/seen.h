// Facts about the machine that differ between Wine and Windows.
#pragma once

#include <string>

namespace vok::test {

// The version of the Wine that this runs under; empty on Windows.
std::string wineVersion();

inline bool onWindows() {
    return wineVersion().empty();
}

// Tells the runner what was seen here of a row of docs/windows.md; of a failed test it is no
// matter.
void seenOnWindows(const char* row, const std::string& what);

}  // namespace vok::test
