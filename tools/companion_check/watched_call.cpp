#include "watched_call.h"

#include <cstdlib>
#include <functional>
#include <string>

#include "common/output.h"
#include "common/window.h"

namespace vok::check {

namespace {

DWORD WINAPI run(void* argument) {
    (*static_cast<const std::function<void()>*>(argument))();
    return 0;
}

void serveWindows() {
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        DispatchMessageA(&message);
    }
}

bool waitFor(HANDLE thread, DWORD limit) {
    const DWORD start = GetTickCount();
    for (;;) {
        const DWORD passed = GetTickCount() - start;
        const DWORD rest = passed < limit ? limit - passed : 0;
        const DWORD result = MsgWaitForMultipleObjects(1, &thread, FALSE, rest, QS_ALLINPUT);
        if (result != WAIT_OBJECT_0 + 1) {
            return result == WAIT_OBJECT_0;
        }
        serveWindows();
    }
}

}  // namespace

bool callWithin(DWORD limit, const std::function<void()>& call,
                const std::function<void()>& freeIt) {
    const HANDLE thread =
        CreateThread(nullptr, 0, run, const_cast<std::function<void()>*>(&call), 0, nullptr);
    if (thread == nullptr) {
        tools::complain("vok-companion-check: no thread can be made\n");
        std::exit(2);
    }
    const bool inTime = waitFor(thread, limit);
    if (!inTime) {
        freeIt();
        // What the call uses goes with this frame, so that there is no way on without its end.
        waitFor(thread, INFINITE);
    }
    CloseHandle(thread);
    return inTime;
}

bool waitUntil(DWORD limit, const std::function<bool()>& isTrue) {
    constexpr DWORD pause = 10;
    const DWORD start = GetTickCount();
    while (!isTrue()) {
        if (GetTickCount() - start >= limit) {
            return false;
        }
        serveWindows();
        Sleep(pause);
    }
    return true;
}

std::string within(DWORD limit) {
    return " within " + std::to_string(limit) + " ms";
}

std::string askWindow(DWORD limit, HWND window) {
    return tools::answersMessages(window, limit)
               ? ""
               : "its window is there and answers no message" + within(limit) +
                     ": the companion does not serve it";
}

}  // namespace vok::check
