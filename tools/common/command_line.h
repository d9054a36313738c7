// The command lines of the tools.
#ifndef VOK_TOOLS_COMMON_COMMAND_LINE_H
#define VOK_TOOLS_COMMON_COMMAND_LINE_H

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace vok::tools {

inline constexpr int exitMisused = 2;

// False when the program is to end with `status`: it was asked for help, which is printed, or it
// was misused, which is said.
bool parse(CLI::App& app, int count, const char* const* words, int& status);

// False, and said, when something that was printed was lost.
bool allWasPrinted(const char* program);

}  // namespace vok::tools

#endif
