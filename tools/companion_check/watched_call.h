// Calls that may never return, because a companion never answers.
#ifndef VOK_TOOLS_COMPANION_CHECK_WATCHED_CALL_H
#define VOK_TOOLS_COMPANION_CHECK_WATCHED_CALL_H

#include <windows.h>

#include <functional>
#include <string>

namespace vok::check {

// Runs the call on a thread of its own, while this thread serves its windows. When the call has
// not returned within `limit` milliseconds, `freeIt` has to do what makes it return. False then.
bool callWithin(DWORD limit, const std::function<void()>& call,
                const std::function<void()>& freeIt);

// Asks until the answer is yes, while this thread serves its windows. False when it did not become
// yes within `limit` milliseconds.
bool waitUntil(DWORD limit, const std::function<bool()>& isTrue);

// " within 10000 ms".
std::string within(DWORD limit);

// What is wrong with a window that is there and answers no message in time, or an empty text.
std::string askWindow(DWORD limit, HWND window);

}  // namespace vok::check

#endif
