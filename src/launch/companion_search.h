// Finding a companion that runs already, or is about to.
#pragma once

#include <windows.h>

namespace vok {

// Looks for a window up to 200 times, 10 ms apart, and logs how it went. Null class or title: any.
HWND FindXWindow(const char* className, const char* title);

// Whether a mutex "Global\" + the name in upper case exists in any session. Every failure to open
// it counts as no.
bool IsXFileRunning(const char* name);

}  // namespace vok
