// Finding or starting NEMB, the job companion.
#pragma once

#include <vok/vok.h>

namespace vok {

// Return how NEMB is reached, for the record's `hNEMB`: a window, a pipe's server end (also the
// invalid handle, when the pipe could not be made), or null. The NT variant stores the mode in the
// record; process and thread are stored where the start yields them.
HANDLE StartNEMBXP(const char* friendlyName, const char* portName, VKDATA* record);
HANDLE StartNEMB9X(const char* friendlyName, VKDATA* record);

}  // namespace vok
