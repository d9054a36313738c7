// The command line of vok-log.
#ifndef VOK_LOG_OPTIONS_H
#define VOK_LOG_OPTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "job_filter.h"

namespace vok::log {

enum class Format { Table, Json, Trace, Html };

struct Options {
    std::vector<std::string> files;
    Format format = Format::Table;
    std::string output = "-";
    bool problemsOnly = false;
    bool joined = false;
    bool follow = false;
    bool progress = true;
    bool messages = false;
    double slowSeconds = 10;
    double silentSeconds = 10;
    Wanted wanted;
    std::size_t maxJobs = 10000;
};

enum ExitStatus { ExitNoProblem = 0, ExitProblems = 1, ExitMisused = 2 };

// Without a value the program is to end with `status`: help was asked for, or the line is wrong,
// which has been said.
std::optional<Options> parseOptions(int count, const char* const* words, int& status);

}  // namespace vok::log

#endif
