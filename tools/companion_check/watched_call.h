// Calls that may never return, because a companion never answers.
#ifndef VOK_TOOLS_COMPANION_CHECK_WATCHED_CALL_H
#define VOK_TOOLS_COMPANION_CHECK_WATCHED_CALL_H

#include <windows.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace vok::check {

// What was wrong with the companion: ends a check wherever it is seen.
class Fault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Takes the steps, and puts before a fault in which of several cases it was.
void inCase(const std::string& which, const std::function<void()>& steps);

// Runs the call on a thread of its own, while this thread serves its windows. When the call has
// not returned within `limit` milliseconds, `freeIt` has to do what makes it return, and that there
// was no answer is the fault.
void callWithin(DWORD limit, const std::function<void()>& call,
                const std::function<void()>& freeIt);

// Asks until the answer is yes, while this thread serves its windows. Throws the fault when it did
// not become yes within `limit` milliseconds, which is said behind it.
void await(DWORD limit, const std::string& fault, const std::function<bool()>& isTrue);

// Throws the fault when the window is there and answers no message in time.
void askWindow(DWORD limit, HWND window);

}  // namespace vok::check

#endif
