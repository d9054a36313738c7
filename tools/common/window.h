// Whether a window is served.
#ifndef VOK_TOOLS_COMMON_WINDOW_H
#define VOK_TOOLS_COMMON_WINDOW_H

#include <windows.h>

namespace vok::tools {

// Sends the window a message that does nothing. False when no answer comes within so many
// milliseconds: a window whose program does not serve it any more is still found.
bool answersMessages(HWND window, DWORD limit);

}  // namespace vok::tools

#endif
