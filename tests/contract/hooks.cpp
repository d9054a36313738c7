#include "hooks.h"

#include "allocations.h"
#include "common/other_session.h"

extern "C" {

__declspec(dllexport) BOOL moveToSessionZero(HMODULE library) {
    return vok::sample::moveToSessionZero(library) ? TRUE : FALSE;
}

__declspec(dllexport) BOOL failAllocation(HMODULE library, LONG k, BOOL forEver) {
    return vok::test::failAllocation(library, k, forEver != FALSE) ? TRUE : FALSE;
}

__declspec(dllexport) LONG failedAllocations() {
    return vok::test::failedAllocations();
}

}  // extern "C"
