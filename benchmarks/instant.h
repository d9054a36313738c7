// A machine that answers every call at once, so that what is timed is our own code.
//
// The printer's companions run, the configuration library is there, every look at the clock finds
// it one millisecond later. Nothing is recorded and nothing is kept.
#pragma once
#include <map>
#include <string>

#include "cases.h"

namespace vok::bench {

void setInstantMachine(Route route, Logging logging);

// The answers by the names of the calls, to be put into a module's import table.
std::map<std::string, void*> instantAnswers();

// How the companions are reached there.
Job instantJob();

}  // namespace vok::bench
