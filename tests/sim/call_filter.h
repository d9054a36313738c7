// Tells the calls that only the logging makes from those of the work itself.
#pragma once
#include <vector>

#include "recorder.h"

namespace vok::test {

class System;

// The recorded calls without the logging's: its configuration library, its registry key, its
// options, its file, its mutex and its security descriptors; in order.
std::vector<const CallRecord*> callsOfTheWork(const System& system);

}  // namespace vok::test
