#include "watched_call.h"

#include <fmt/format.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "common/system.h"

namespace vok::check {

namespace {

DWORD WINAPI run(void* argument) {
    (*static_cast<const std::function<void()>*>(argument))();
    return 0;
}

// False when the answer was not yes within the limit. The end of `thread`, where there is one, is
// seen at once.
bool waitUntil(DWORD limit, const std::function<bool()>& isTrue, HANDLE thread = nullptr) {
    constexpr DWORD pause = 10;
    const DWORD start = GetTickCount();
    while (!isTrue()) {
        if (GetTickCount() - start >= limit) {
            return false;
        }
        MsgWaitForMultipleObjects(thread == nullptr ? 0 : 1, &thread, FALSE, pause, QS_ALLINPUT);
        MSG message = {};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            DispatchMessageA(&message);
        }
    }
    return true;
}

}  // namespace

void inCase(const std::string& which, const std::function<void()>& steps) {
    try {
        steps();
    } catch (const Fault& fault) {
        throw Fault(which + fault.what());
    }
}

void callWithin(DWORD limit, const std::function<void()>& call,
                const std::function<void()>& freeIt) {
    const HANDLE thread =
        CreateThread(nullptr, 0, run, const_cast<std::function<void()>*>(&call), 0, nullptr);
    if (thread == nullptr) {
        throw std::runtime_error("no thread can be made");
    }
    const auto ended = [thread] { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; };
    const bool inTime = waitUntil(limit, ended, thread);
    if (!inTime) {
        freeIt();
        // What the call uses goes with this frame, so that there is no way on without its end.
        waitUntil(INFINITE, ended, thread);
    }
    CloseHandle(thread);
    if (!inTime) {
        throw Fault(fmt::format("no answer within {} ms", limit));
    }
}

void await(DWORD limit, const std::string& fault, const std::function<bool()>& isTrue) {
    if (!waitUntil(limit, isTrue)) {
        throw Fault(fmt::format("{} within {} ms", fault, limit));
    }
}

void askWindow(DWORD limit, HWND window) {
    if (!tools::answersMessages(window, limit)) {
        throw Fault(fmt::format(
            "its window is there and answers no message within {} ms: the companion does not "
            "serve it",
            limit));
    }
}

}  // namespace vok::check
