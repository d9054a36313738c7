// The tools' command lines, and what they print.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <optional>
#include <string>

namespace vok::tools {

inline constexpr int exitMisused = 2;

// The status that the program is to end with: it was asked for help, which is printed, or it was
// misused, which is said. Else nothing.
std::optional<int> parse(CLI::App& app, int count, const char* const* words);

// Prints to the standard output; what gets lost shows in allWasPrinted.
void print(const std::string& text);

// False, and said, when something that was printed was lost: a full disk must not look like an
// empty report.
bool allWasPrinted(const std::string& program);

// Prints to the standard error output. When that fails nobody is left to be told.
void complain(const std::string& text);

}  // namespace vok::tools
