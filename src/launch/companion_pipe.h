// The server end of the pipe by which a companion in another session is reached.
#ifndef VOK_LAUNCH_COMPANION_PIPE_H
#define VOK_LAUNCH_COMPANION_PIPE_H

#include <windows.h>

namespace vok {

// Makes one instance of the pipe that bears the prefix directly followed by the printer's friendly
// name; every user may connect to it. INVALID_HANDLE_VALUE on failure.
HANDLE createCompanionPipe(const char* namePrefix, const char* friendlyName);

}  // namespace vok

#endif
