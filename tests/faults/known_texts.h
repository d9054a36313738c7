// The messages that the library can write to its logs.
#pragma once
#include <string>

namespace vok::test {

// Whether a line of the ordinary log is one whole record of the exported calls.
bool isKnownLine(const std::string& line);

// The same for the critical log.
bool isKnownCriticalLine(const std::string& line);

}  // namespace vok::test
