#include "partner.h"

#include <string>
#include <utility>

namespace vok::check {

PartnerWindow::PartnerWindow(std::string className, const std::string& title)
    : className_(std::move(className)) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcA;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = className_.c_str();
    RegisterClassA(&windowClass);
    window_ = CreateWindowExA(0, className_.c_str(), title.c_str(), WS_OVERLAPPED, 0, 0, 1, 1,
                              nullptr, nullptr, windowClass.hInstance, nullptr);
}

PartnerWindow::~PartnerWindow() {
    DestroyWindow(window_);
    UnregisterClassA(className_.c_str(), GetModuleHandleA(nullptr));
}

}  // namespace vok::check
