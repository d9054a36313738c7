#include "other_session.h"

#include <bit>
#include <cstring>

#include "import_table.h"

namespace vok::sample {
namespace {

DWORD ownSession = 0;

// Asked for by name, because the import that is replaced may be this very module's: its address,
// which the compiler takes for a constant, would lead back here.
decltype(&GetProcAddress) systemGetProcAddress = nullptr;

decltype(&GetProcAddress) findGetProcAddress() {
    const FARPROC found = GetProcAddress(GetModuleHandleA("KERNEL32.DLL"), "GetProcAddress");
    return std::bit_cast<decltype(&GetProcAddress)>(found);
}

BOOL WINAPI sessionOfProcess(DWORD process, DWORD* session) {
    if (process != GetCurrentProcessId())
        return ProcessIdToSessionId(process, session);
    *session = ownSession;
    return TRUE;
}

FARPROC WINAPI lookUp(HMODULE module, const char* name) {
    // A name may be a number in disguise, which is no text to compare.
    const bool isText = (reinterpret_cast<ULONG_PTR>(name) >> 16) != 0;
    if (isText && std::strcmp(name, "ProcessIdToSessionId") == 0)
        return std::bit_cast<FARPROC>(&sessionOfProcess);
    return systemGetProcAddress(module, name);
}

}  // namespace

bool moveToSession(HMODULE library, DWORD session) {
    ownSession = session;
    // Null before the first move only.
    // cppcheck-suppress knownConditionTrueFalse
    if (systemGetProcAddress == nullptr)
        systemGetProcAddress = findGetProcAddress();
    return replaceImport(library, "GetProcAddress", std::bit_cast<FARPROC>(&lookUp));
}

}  // namespace vok::sample
