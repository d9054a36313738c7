// The value that guards the stack, and the end of a process whose stack was overrun. GCC's own
// support library opens a cryptographic provider at every load and prints to a console that a
// spooler doesn't have.

#include <windows.h>
#include <x86intrin.h>

#include <cstdint>

#include "runtime/end_process.h"

extern "C" {

extern std::uintptr_t __stack_chk_guard;
std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
    vok::endProcess(vok::FastFail::StackCookieCheckFailure);
}

}  // extern "C"

namespace {

// Before every other initialiser; without a guard of its own, since it changes the value.
__attribute__((constructor(101), no_stack_protector)) void chooseGuard() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    std::uint64_t value =
        (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) ^ now.dwLowDateTime;
    value ^= __rdtsc() * 0x9E3779B97F4A7C15ULL;
    value ^= reinterpret_cast<std::uintptr_t>(&now) << 16;
    value ^= static_cast<std::uint64_t>(GetCurrentProcessId()) << 32 | GetCurrentThreadId();
    // A zero byte at the low end stops an overrun by text.
    __stack_chk_guard = value << 8;
}

}  // namespace
