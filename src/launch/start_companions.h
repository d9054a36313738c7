// Finding or starting both companions for one job.
#pragma once

#include <vok/vok.h>

namespace vok {

// DRAL first, each by the variant of the running system; stores in the record how each is reached.
// NEMB's turn comes when DRAL is reached, by the invalid handle of a pipe that could not be made
// too, and on the NT window route also when DRAL is not. True when both are reached.
bool startCompanions(const char* friendlyName, const char* portName, VKDATA& record);

}  // namespace vok
