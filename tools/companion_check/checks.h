// The checks of a companion.
#pragma once

#include <string>
#include <vector>

#include "host.h"

namespace vok::check {

struct Check {
    const char* name;  // "pipe-opens"; stays as it is from version to version
    Route route;
    // The job is not launched yet, and of a printer that no other check has had. Returns what is
    // worth telling when nothing is wrong; throws Fault.
    std::string (*make)(Job& job);
    // What only the pipe route asks of a companion can't be checked where there is no such route.
    bool needsPipes = route == Route::Pipe;
};

// In the order in which they are made.
std::vector<Check> checksFor(const Host& host);

}  // namespace vok::check
