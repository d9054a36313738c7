/**
 * @file machine.h
 * What the samples have to know of the machine that they run on.
 */
#pragma once

#include <string>

namespace vok::sample {

/// True on the 9x systems, where companions live in the system directory and bear other titles.
bool is9x();

/// True when this program may change the machine: as an administrator who was asked, where Windows
/// asks. On the 9x systems everybody is one.
bool isAdministrator();

/// The system directory, without a backslash at its end.
std::string systemDirectory();

/// The printer driver directory with its version subdirectory ("…\x64\3"; "2" before version 5.0;
/// none on 9x), without a backslash at its end: where the library looks for the companions. Empty
/// when the spooler does not tell.
std::string driverDirectory();

/// Where this machine keeps the companions: the system directory on 9x, else the driver directory.
std::string companionDirectory();

/// "name (error 5)": what failed, and the system's error number.
std::string withError(const std::string& what, unsigned long error);

}  // namespace vok::sample
