// The checks, in the order in which they are made.
#ifndef VOK_TOOLS_COMPANION_CHECK_CHECKS_H
#define VOK_TOOLS_COMPANION_CHECK_CHECKS_H

#include <string>
#include <vector>

#include "host.h"
#include "results.h"

namespace vok::check {

// What of a companion only the pipe route asks for can't be checked where there is no such route.
enum class AskedBy { Everybody, PipeRoute };

struct Check {
    const char* name;
    Route route;
    AskedBy askedBy;
    // Returns what was wrong, or an empty text; `seen` gets what is worth telling either way.
    std::string (*make)(Host& host, std::string& seen);
};

std::vector<Check> messageChecks(const Host& host);
std::vector<Check> pipeChecks();

// By whichever route the host takes.
std::string checkJob(Host& host, std::string& seen);
std::string checkCancel(Host& host, std::string& seen);
std::string checkTwoJobs(Host& host, std::string& seen);
std::string checkTwoPrinters(Host& host, std::string& seen);

// Makes every check from a clean start and says on standard output how it went, unless `quiet`.
std::vector<Result> makeChecks(Host& host, bool stop, bool quiet);

}  // namespace vok::check

#endif
