#include "locks.h"

#include <span>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

void WINAPI initializeCriticalSection(LPCRITICAL_SECTION section) {
    ++lockCounts().initialised;
    real.initializeCriticalSection(section);
}

void WINAPI deleteCriticalSection(LPCRITICAL_SECTION section) {
    ++lockCounts().deleted;
    real.deleteCriticalSection(section);
}

void WINAPI enterCriticalSection(LPCRITICAL_SECTION section) {
    ++lockCounts().entered;
    real.enterCriticalSection(section);
}

void WINAPI leaveCriticalSection(LPCRITICAL_SECTION section) {
    ++lockCounts().left;
    real.leaveCriticalSection(section);
}

DWORD WINAPI getLastError() {
    const DWORD error = real.getLastError();
    ++lockCounts().lastErrorReads;
    const System* system = System::find();
    if (system && system->calls.records("GetLastError")) {
        Call call("GetLastError");
        call.done(error);
    }
    return error;
}

}  // namespace

LockCounts& lockCounts() {
    static LockCounts counts;
    return counts;
}

std::span<const Substitute> lockSubstitutes() {
    static const Substitute all[] = {
        substitute("InitializeCriticalSection", initializeCriticalSection),
        substitute("DeleteCriticalSection", deleteCriticalSection),
        substitute("EnterCriticalSection", enterCriticalSection),
        substitute("LeaveCriticalSection", leaveCriticalSection),
        substitute("GetLastError", getLastError),
    };
    return all;
}

}  // namespace vok::test
