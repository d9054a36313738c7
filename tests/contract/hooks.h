/**
 * @file hooks.h
 * contract_hooks.dll: what a consumer without a C runtime does to the library that it has loaded.
 */
#pragma once

#include <windows.h>

/** moveToSessionZero: has it take the pipe route. */
typedef BOOL(__cdecl* MoveToSessionZeroFn)(HMODULE library);

/** failAllocation and failedAllocations: as allocations.h has them. */
typedef BOOL(__cdecl* FailAllocationFn)(HMODULE library, LONG k, BOOL forEver);
typedef LONG(__cdecl* FailedAllocationsFn)(void);
