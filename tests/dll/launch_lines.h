// What the log shows of a launch for the printer "Office", piece by piece.
#pragma once
#include <string>

#include "dll/job_fixture.h"

namespace vok::test {

// What an export and its first line write.
Lines launchBegins(const std::string& portName = "LPT1:");
inline const std::string launchFailed = "rc = FALSE from VOKLaunchXFiles";
inline const std::string launchSucceeded = "rc = TRUE from VOKLaunchXFiles StartJobTime=";

// What the look-up of the model prefix writes.
Lines prefixLookup();

// What an NT start writes before it chooses its way.
Lines startBegins(const System& system, const std::string& function);

// The command lines of the companions on NT. NEMB's file name depends on the route.
std::string dralCommand(const System& system);
std::string nembPipeCommand(const System& system);
std::string nembMessageCommand(const System& system);

// A line that ends in a handle.
std::string lineOf(const std::string& text, const void* handle);

}  // namespace vok::test
