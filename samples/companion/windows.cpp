#include "windows.h"

#include <string>

#include "common/agreement.h"
#include "common/machine.h"

namespace vok::sample {
namespace {

LRESULT answerEvent(Companion& companion, const COPYDATASTRUCT& event) {
    if (event.cbData != companion.blockSize()) {
        companion.say("a block of " + std::to_string(event.cbData) + " bytes is not ours");
        return YESPRINT;
    }
    const DWORD id = static_cast<DWORD>(event.dwData);
    return companion.answer(id, event.lpData, "message").reply;
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    auto* companion = reinterpret_cast<Companion*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message == WM_COPYDATA && companion != nullptr)
        return answerEvent(*companion, *reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    if (message == WM_CLOSE) {
        PostQuitMessage(0);
        return 0;
    }
    if (message >= WM_USER && companion != nullptr)
        companion->say("message " + std::to_string(message) + " was posted, lParam " +
                       std::to_string(lParam));
    return DefWindowProcA(window, message, wParam, lParam);
}

bool makeWindow(Companion& companion, const std::string& className, const std::string& title) {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = className.c_str();
    if (RegisterClassA(&windowClass) == 0 ||
        CreateWindowExA(0, className.c_str(), title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 320, 120,
                        nullptr, nullptr, windowClass.hInstance, &companion) == nullptr) {
        companion.say(withError("the window '" + title + "' can't be made", GetLastError()));
        return false;
    }
    return true;
}

}  // namespace

bool makeWindows(Companion& companion) {
    const Identity& identity = companion.identity();
    if (identity.role == Role::Nemb)
        return makeWindow(companion, identity.prefix + VOK_NEMB_TITLE, companion.title());
    // The hidden window first: once the other is found, the library takes DRAL for running.
    const std::string hidden = VOK_DRAL_HIDDEN + titleSuffix(companion.printer());
    const std::string hiddenTitle = is9x() ? VOK_DRAL_TITLE + companion.printer() : hidden;
    return makeWindow(companion, hidden, hiddenTitle) &&
           makeWindow(companion, identity.prefix + "DRAL Status", companion.title());
}

}  // namespace vok::sample
