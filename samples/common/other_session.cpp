#include "other_session.h"

#include <bit>
#include <cstring>

#include "import_table.h"

namespace vok::sample {
namespace {

BOOL WINAPI sessionZero(DWORD /*process*/, DWORD* session) {
    *session = 0;
    return TRUE;
}

FARPROC WINAPI lookUp(HMODULE module, const char* name) {
    // A name may be a number in disguise, which is no text to compare.
    const bool isText = (std::bit_cast<ULONG_PTR>(name) >> 16) != 0;
    if (isText && std::strcmp(name, "ProcessIdToSessionId") == 0)
        return std::bit_cast<FARPROC>(&sessionZero);
    return GetProcAddress(module, name);
}

}  // namespace

bool moveToSessionZero(HMODULE library) {
    return replaceImport(library, "GetProcAddress", std::bit_cast<FARPROC>(&lookUp));
}

}  // namespace vok::sample
