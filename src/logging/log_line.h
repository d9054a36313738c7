// Message lines, with which everything outside the logging itself reports.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace vok {

// Write one message at the detail level under the category of the installed logger; nothing without
// a logger. None lets a Win32Exception out: a record that can't be written is lost.
void logLine(const char* text);
void logLine(const std::string& text);

// The parts, joined only when there is somebody to write them.
void logLine(std::initializer_list<std::string_view> parts);

// printf form; what is longer than 511 characters is cut.
[[gnu::format(printf, 1, 2)]] void logPrintf(const char* format, ...);

}  // namespace vok
