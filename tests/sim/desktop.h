// The windows of the simulated desktop.
#pragma once
#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vok::test {

// A message that a window received.
struct Message {
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;  // a posted message's; for WM_COPYDATA see below
    bool posted = false;
    ULONG_PTR dataId = 0;  // of WM_COPYDATA
    std::string data;      // its block, copied
};

struct Window {
    std::string className;
    std::string title;
    HWND handle = nullptr;
    // Answers to sent messages, one after another, the last one over and over.
    std::vector<LRESULT> replies = {1};
    // Instead of the list; runs without the lock.
    std::function<LRESULT(const Message&)> reply;
    size_t hiddenFor = 0;  // searches that would find it but do not
    bool destroyed = false;
    std::vector<Message> received;
};

class Desktop {
  public:
    // The window stays where it is for as long as the system lives.
    Window& add(const std::string& className, const std::string& title,
                std::vector<LRESULT> replies = {1});
    void remove(Window& window) { window.destroyed = true; }
    // The first one that a search would find now; null when there is none.
    Window* find(const char* className, const char* title) const;
    const std::vector<std::unique_ptr<Window>>& all() const { return windows_; }

    // For the substitutes.
    Window* search(const char* className, const char* title);
    Window* at(HWND handle) const;

  private:
    std::vector<std::unique_ptr<Window>> windows_;
};

}  // namespace vok::test
