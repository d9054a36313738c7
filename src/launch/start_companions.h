// Finding or starting both companions for one job.
#ifndef VOK_LAUNCH_START_COMPANIONS_H
#define VOK_LAUNCH_START_COMPANIONS_H

#include <vok/vok.h>

namespace vok {

// DRAL first, each by the variant of the running system; stores in the record how each is reached.
// NEMB is started also when DRAL has no window yet, but not when DRAL's pipe could not be made.
// True when both are reached.
bool startCompanions(const char* friendlyName, const char* portName, VKDATA& record);

}  // namespace vok

#endif
