// The command line of vok-log, and the accounts that it asks for: sinks that write as the jobs
// come, or at the end.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "assembler.h"
#include "writer.h"

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
    std::size_t maxJobs = 10000;
    std::string printer;            // only jobs with this part of its name, in upper or lower case
    Time since = noTime;            // only jobs that were not over by then
    Time until = noTime;            // only jobs that had begun by then
    std::vector<std::string> only;  // any of these results, weights, companions or messages
    std::size_t slowest = 0;        // so many, the slowest first; 0: all
};

enum ExitStatus { ExitNoProblem = 0, ExitProblems = 1, ExitMisused = 2 };

// Without a value the program is to end with `status`: help was asked for, or the line is wrong,
// which has been said.
std::optional<Options> parseOptions(int count, const char* const* words, int& status);

// For people: one line for each job, and what it all means.
std::unique_ptr<Sink> makeTable(Writer& writer, const Options& options);

// For programs.
std::unique_ptr<Sink> makeJson(Writer& writer, const Options& options);

// Trace events, for viewers of Chrome's trace format.
std::unique_ptr<Sink> makeTrace(Writer& writer);

// One page with a picture of the jobs over time.
std::unique_ptr<Sink> makePage(Writer& writer, const Options& options);

// Lets through to an account the jobs that were asked for.
std::unique_ptr<Sink> makeFilter(Sink& account, const Options& options);

}  // namespace vok::log
