// Starting a companion's program.
#pragma once

#include <vok/vok.h>

#include <cstdint>

namespace vok {

// Which companion's handles of the record a start fills in.
enum Companion : std::uint32_t { companionNemb = 0, companionDral = 1 };

// NT: starts the command line in the interactive user's session and environment, on that user's
// desktop, and stores process and thread in the record. Where no user token is to be had: by
// WinExec, which stores nothing, or for a network port with the spooler's own token; the calling
// thread is then left impersonating. Returns the process's handle, 1 after WinExec, null on
// failure.
HANDLE LaunchProgram(const char* commandLine, const char* portName, VKDATA* record,
                     Companion companion);

// 9x: starts the application and stores process and thread in the record, which may be null.
// Returns 0, or the system's error code.
std::uint32_t LaunchXFile(VKDATA* record, const char* applicationPath, const char* commandLine,
                          Companion companion);

// Starts a command line with WinExec. False when that answers 31 or less.
bool winExec(const char* commandLine, UINT showState);

}  // namespace vok
