// vok-companion-check's command line.
#ifndef VOK_TOOLS_COMPANION_CHECK_COMMAND_LINE_H
#define VOK_TOOLS_COMPANION_CHECK_COMMAND_LINE_H

#include <optional>
#include <string>

namespace vok::check {

struct Options {
    std::string companion;
    std::string library;  // empty: the DLL beside this program
    std::string junit;    // file for the JUnit XML; empty: none
    unsigned long limit = 10000;
    bool stop = false;  // at the first check that fails
    bool json = false;
};

// Nothing when the program is to end with `status`.
std::optional<Options> parseCommandLine(int count, const char* const* words, int& status);

}  // namespace vok::check

#endif
