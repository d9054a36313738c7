/**
 * @file other_session.h
 * On a real machine the spooler runs in session 0 and the user in another, which is what makes the
 * library use pipes. Where everything runs in one session, this makes one library believe it.
 */
#pragma once

#include <windows.h>

namespace vok::sample {

/// Makes the library see its own process in the given session, by what it gets when it looks up
/// "ProcessIdToSessionId": its import of GetProcAddress is replaced. Nothing else of the process
/// is touched, and the console session stays the real one. One session for all libraries.
/// @return False when the library has no such import, or it can't be written.
bool moveToSession(HMODULE library, DWORD session);

inline bool moveToSessionZero(HMODULE library) {
    return moveToSession(library, 0);
}

}  // namespace vok::sample
