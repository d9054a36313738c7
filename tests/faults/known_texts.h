// The messages that the library can write to its logs.
#pragma once
#include <string>
#include <string_view>

namespace vok::test {

// Whether a text is as the pattern says, in which a star stands for any text
// and a question mark for any character.
bool matches(std::string_view text, std::string_view pattern);

// Whether a line of the ordinary log is one whole record of the exported calls.
bool isKnownLine(const std::string& line);

// The same for the critical log.
bool isKnownCriticalLine(const std::string& line);

}  // namespace vok::test
