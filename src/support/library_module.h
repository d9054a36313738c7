// This library's own module.
#pragma once

#include <windows.h>

namespace vok {

// The handle that the entry point was given; null before. Written once, at process attach, before
// any export can run.
HMODULE libraryModule();
void setLibraryModule(HMODULE module);

}  // namespace vok
