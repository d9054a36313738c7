/**
 * @file windows.h
 * The window route: windows that bear the names by which the library finds a companion, and that
 * answer its WM_COPYDATA. WM_CLOSE to any of them ends the companion.
 */
#pragma once

#include "companion.h"

namespace vok::sample {

/// Makes the companion's windows, on the calling thread, which must then get their messages.
/// @param companion Must outlive the windows.
/// @return False when one can't be made; that is said in the account.
bool makeWindows(Companion& companion);

}  // namespace vok::sample
