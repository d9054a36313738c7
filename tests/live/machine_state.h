// What a program must have left as it was.
#pragma once

#include <windows.h>

#include <map>
#include <string>

namespace vok::test {

using State = std::map<std::string, std::string>;

// Every value below a key, by its path, with its type and bytes; keys without values too.
State registryBelow(HKEY root, const std::string& path);

// Every file in a folder, by its name, with its size and time.
State filesIn(const std::string& folder);

}  // namespace vok::test
