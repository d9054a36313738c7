/**
 * @file guard.h
 * What keeps a program alive when a call of the library runs out of memory.
 */
#pragma once

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Calls `part` with `argument`.
 *
 * @return False when memory ran out in a call of the library: the part did not come to its end. The
 *         library is as if that call had ended, and may be called again. Any other exception goes
 *         on its way. C compiled by GCC or clang for mingw-w64 has no means to stop an exception:
 *         there it goes on too, and the caller's C++ has to catch it.
 */
BOOL guarded(void(__cdecl* part)(void* argument), void* argument);

#ifdef __cplusplus
}
#endif
