// The interactive user's session: its token, and whether the spooler lives in it.
#pragma once

#include <windows.h>

#include <cstdint>

namespace vok {

// The token of the user at the console, owned by the caller. Stores the last error, after a success
// too. Returns what WTSQueryUserToken returned; 0 also where the system lacks it. A null `token` is
// answered 0 with nothing done and nothing stored.
BOOL GetUserTokenWts(HANDLE* token, std::uint32_t* lastError);

// The console's session and this process's. `consoleSession` is left alone where the system
// can't tell it, `processSession` is 0 then. Always returns 0.
std::uint32_t FindOutSessionInfo(std::uint32_t* consoleSession, std::uint32_t* processSession);

// Whether a companion must be reached by pipe: the system has sessions and the spooler is in
// another one than the console. Asks for the family and, where it has sessions, for both ids.
bool spoolerIsApart();

}  // namespace vok
