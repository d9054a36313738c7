// The allocations of a loaded library, which can be made to fail.
#pragma once

#include <windows.h>

namespace vok::test {

// Gives it no memory the k-th time from now (from 1; 0: always gives some), and with forEver at
// every later time too. False when its allocations can't be had.
bool failAllocation(HMODULE library, LONG k, bool forEver);

// How often it was given none since.
LONG failedAllocations();

}  // namespace vok::test
