#include "desktop.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "call.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

bool matches(const Window& window, const char* className, const char* title) {
    return !window.destroyed && (!className || sameText(window.className, className)) &&
           (!title || sameText(window.title, title));
}

HWND WINAPI findWindowA(LPCSTR className, LPCSTR title) {
    Call call("FindWindowA", className, title);
    if (call.fails()) {
        return call.failed<HWND>();
    }
    const Window* window = call.system().desktop.search(className, title);
    return window ? call.done(window->handle)
                  : call.done(HWND{nullptr}, DWORD{ERROR_FILE_NOT_FOUND});
}

Message copiedMessage(UINT id, WPARAM wParam, LPARAM lParam) {
    Message message{id, wParam, lParam, false, 0, {}};
    if (id == WM_COPYDATA) {
        const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        message.dataId = data->dwData;
        message.data.assign(static_cast<const char*>(data->lpData),
                            data->lpData ? data->cbData : 0);
        message.lParam = 0;
    }
    return message;
}

std::string messageText(UINT id, LPARAM lParam) {
    if (id != WM_COPYDATA) {
        return std::to_string(lParam);
    }
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    return "copydata{" + std::to_string(data->dwData) + ", " +
           describe(Bytes{data->lpData, data->cbData}) + "}";
}

LRESULT WINAPI sendMessageA(HWND handle, UINT id, WPARAM wParam, LPARAM lParam) {
    Call call("SendMessageA", handle, id, wParam, messageText(id, lParam));
    if (call.fails()) {
        return call.failed<LRESULT>();
    }
    Window* window = call.system().desktop.at(handle);
    if (!window) {
        return call.done(LRESULT{0}, DWORD{ERROR_INVALID_WINDOW_HANDLE});
    }
    const size_t turn = window->received.size();
    window->received.push_back(copiedMessage(id, wParam, lParam));
    if (const auto reply = window->reply) {
        const Message message = window->received.back();
        return call.done(call.unlocked([&] { return reply(message); }));
    }
    const auto& replies = window->replies;
    return call.done(replies.empty() ? 0 : replies[std::min(turn, replies.size() - 1)]);
}

BOOL WINAPI postMessageA(HWND handle, UINT id, WPARAM wParam, LPARAM lParam) {
    Call call("PostMessageA", handle, id, wParam, lParam);
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    Window* window = call.system().desktop.at(handle);
    if (!window) {
        return call.done(FALSE, DWORD{ERROR_INVALID_WINDOW_HANDLE});
    }
    window->received.push_back({id, wParam, lParam, true, 0, {}});
    return call.done(TRUE);
}

}  // namespace

Window& Desktop::add(const std::string& className, const std::string& title,
                     std::vector<LRESULT> replies) {
    auto window = std::make_unique<Window>();
    window->className = className;
    window->title = title;
    window->replies = std::move(replies);
    window->handle = static_cast<HWND>(System::current().handles.open(Kind::window));
    windows_.push_back(std::move(window));
    return *windows_.back();
}

Window* Desktop::find(const char* className, const char* title) const {
    for (const auto& window : windows_) {
        if (matches(*window, className, title) && window->hiddenFor == 0) {
            return window.get();
        }
    }
    return nullptr;
}

Window* Desktop::search(const char* className, const char* title) {
    Window* found = find(className, title);
    for (const auto& window : windows_) {
        if (window->hiddenFor > 0 && matches(*window, className, title)) {
            --window->hiddenFor;
        }
    }
    return found;
}

Window* Desktop::at(HWND handle) const {
    for (const auto& window : windows_) {
        if (window->handle == handle && !window->destroyed) {
            return window.get();
        }
    }
    return nullptr;
}

std::span<const Substitute> desktopSubstitutes() {
    static const Substitute all[] = {
        substitute("FindWindowA", findWindowA),
        substitute("SendMessageA", sendMessageA),
        substitute("PostMessageA", postMessageA),
    };
    return all;
}

}  // namespace vok::test
