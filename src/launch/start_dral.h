// Finding or starting DRAL, the status companion.
#pragma once

#include <vok/vok.h>

namespace vok {

// Return how DRAL is reached, for the record's `hDRAL`: a window, a pipe's server end (also the
// invalid handle, when the pipe could not be made), or null. The NT variant stores the mode in the
// record; process and thread are stored where the start yields them.
HANDLE StartDRALXP(const char* friendlyName, const char* portName, VKDATA* record);
HANDLE StartDRAL9X(const char* friendlyName, VKDATA* record);

}  // namespace vok
