// The end of a process that can't go on, the same for every reason.
#pragma once

namespace vok {

// Why, as the crash report names it: the system's numbers for it.
enum class FastFail : unsigned { StackCookieCheckFailure = 2, FatalAppExit = 7 };

// The system ends the process at once and reports the crash. No handler runs on a stack that may be
// broken, and no box waits for somebody, as `abort`'s may in a process with windows.
[[noreturn]] inline void endProcess(FastFail reason) {
    asm volatile("int $0x29" : : "c"(reason));
    __builtin_unreachable();
}

}  // namespace vok
