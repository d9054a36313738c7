// This library's own module.
#ifndef VOK_SUPPORT_LIBRARY_MODULE_H
#define VOK_SUPPORT_LIBRARY_MODULE_H

#include <windows.h>

namespace vok {

// The handle that the entry point was given; null before. Written once, at process attach, before
// any export can run.
HMODULE libraryModule();
void setLibraryModule(HMODULE module);

}  // namespace vok

#endif
