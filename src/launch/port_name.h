// Names of ports and printers that may lead to another machine.
#pragma once

#include <string>

namespace vok {

// The local form of a name: what follows the first occurrence of this computer's name, or all of it
// when it doesn't occur. \\HOST\queue becomes \queue on HOST. Null counts as empty.
std::string StripComputerName(const char* source);

// Whether the text has the form of two backslashes, a host, a backslash and at least one more
// character.
bool IsUncPath(const std::string& text);

}  // namespace vok
