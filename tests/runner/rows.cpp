#include "rows.h"

#include <windows.h>

#include <sstream>
#include <string>

namespace vok::test {
namespace {

// As it is, whatever the program's manifest says.
std::string windowsVersion() {
    OSVERSIONINFOW info = {};
    info.dwOSVersionInfoSize = sizeof info;
    const auto get = reinterpret_cast<LONG(WINAPI*)(OSVERSIONINFOW*)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlGetVersion")));
    if (get == nullptr || get(&info) != 0) {
        return "Windows of an unknown version";
    }
    return "Windows " + std::to_string(info.dwMajorVersion) + "." +
           std::to_string(info.dwMinorVersion) + "." + std::to_string(info.dwBuildNumber);
}

}  // namespace

void takeRows(const std::string& output, Rows& rows) {
    constexpr char mark[] = "seen on Windows: ";
    constexpr char between[] = " | ";
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        // A test's output is text of the system, with a carriage return before each end of line.
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        const std::size_t middle = line.find(between);
        if (line.starts_with(mark) && middle != std::string::npos) {
            const std::size_t row = sizeof mark - 1;
            rows[line.substr(row, middle - row)] = line.substr(middle + sizeof between - 1);
        }
    }
}

std::string asTable(const Rows& rows) {
    if (rows.empty()) {
        return "No row of docs/windows.md was shown.\n";
    }
    std::string text = "For the table 'What was seen on Windows' of docs/windows.md:\n\n";
    for (const auto& [row, seen] : rows) {
        text += "| ";
        text += row;
        text += " | ";
        text += windowsVersion();
        text += " | ";
        text += seen;
        text += " |\n";
    }
    return text + "\n";
}

}  // namespace vok::test
