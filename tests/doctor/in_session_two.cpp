// The program that loads this sees itself in session 2.
#include <windows.h>

#include <bit>

#include "common/import_table.h"

namespace {

BOOL WINAPI sessionTwo(DWORD /*process*/, DWORD* session) {
    *session = 2;
    return TRUE;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    return vok::sample::replaceImport(GetModuleHandleA(nullptr), "ProcessIdToSessionId",
                                      std::bit_cast<FARPROC>(&sessionTwo))
               ? TRUE
               : FALSE;
}
