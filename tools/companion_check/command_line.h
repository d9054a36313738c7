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
    bool help = false;
};

extern const char* const usage;

// Nothing, with the reason in `error`, when the line can't be understood.
std::optional<Options> parseCommandLine(int count, const char* const* words, std::string& error);

}  // namespace vok::check

#endif
