// The library's entry point.

#include <windows.h>

#include "support/library_module.h"
#include "support/os_version.h"

// Saves the module's handle, and nothing else: no work is done under the loader's lock. A library
// whose system did not tell its version refuses to be loaded.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    vok::setLibraryModule(module);
    return vok::OsVersion::wasReadAtLoad() ? TRUE : FALSE;
}
