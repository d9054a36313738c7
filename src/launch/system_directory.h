// Files in the system directory.
#pragma once

#include "support/name_buffer.h"

namespace vok {

// The full path of a file there.
NameBuffer pathInSystemDirectory(const char* fileName);

}  // namespace vok
