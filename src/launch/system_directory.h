// Files in the system directory.
#ifndef VOK_LAUNCH_SYSTEM_DIRECTORY_H
#define VOK_LAUNCH_SYSTEM_DIRECTORY_H

#include "support/name_buffer.h"

namespace vok {

// The full path of a file there.
NameBuffer pathInSystemDirectory(const char* fileName);

}  // namespace vok

#endif
