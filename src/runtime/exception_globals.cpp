// What the C++ runtime keeps for each thread about its exceptions. The runtime's own version takes
// memory for it at a thread's first throw and ends the process when there is none: just when a
// throw says that memory ran out. Ours takes memory only for threads beyond the first so many that
// are there at a time. A thread-local slot of the system's can be refused, and the compiler's
// thread-local variables are not made by systems before 6.0 for a library that is loaded at run
// time: a thread finds its entry by looking for it.

#include <cxxabi.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>

#include "runtime/end_process.h"

namespace {

// The layout is the C++ ABI's.
struct Globals {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

// The system's own block of a thread, which is found without a call.
using Thread = const void*;

Thread currentThread() {
    return NtCurrentTeb();
}

struct Entry {
    std::atomic<Thread> thread;  // null: free
    Globals globals;
    Entry* next;
};

constexpr std::size_t reserveSize = 64;

constinit std::array<Entry, reserveSize> reserve = {};
constinit std::atomic<Entry*> others = nullptr;

// Null when there is none of `oldThread`.
Entry* take(Thread oldThread, Thread newThread) {
    const auto taken = [&](Entry& entry) {
        Thread expected = oldThread;
        return entry.thread == oldThread &&
               entry.thread.compare_exchange_strong(expected, newThread);
    };
    for (Entry& entry : reserve) {
        if (taken(entry)) {
            return &entry;
        }
    }
    for (Entry* entry = others; entry != nullptr; entry = entry->next) {
        if (taken(*entry)) {
            return entry;
        }
    }
    return nullptr;
}

// Kept until the library is unloaded: another thread takes it when this one has ended.
Entry* makeEntry(Thread thread) {
    auto* entry = static_cast<Entry*>(std::calloc(1, sizeof(Entry)));
    if (entry == nullptr) {
        vok::endProcess(vok::FastFail::FatalAppExit);
    }
    entry->thread = thread;
    entry->next = others;
    while (!others.compare_exchange_weak(entry->next, entry)) {
    }
    return entry;
}

Globals* globalsOfThread() {
    const Thread thread = currentThread();
    Entry* entry = take(thread, thread);
    if (entry == nullptr) {
        entry = take(nullptr, thread);
    }
    if (entry == nullptr) {
        entry = makeEntry(thread);
    }
    return &entry->globals;
}

// Called by the system in a thread that ends.
void NTAPI giveBack(void* /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_THREAD_DETACH) {
        return;
    }
    if (Entry* entry = take(currentThread(), currentThread())) {
        entry->globals.caughtExceptions = nullptr;
        entry->globals.uncaughtExceptions = 0;
        entry->thread = nullptr;
    }
}

void freeOthers() {
    while (Entry* entry = others) {
        others = entry->next;
        std::free(entry);
    }
}

// Before every initialiser that may throw, so that it is called after everything else. Where that
// can't be remembered they are kept.
__attribute__((constructor(102))) void freeOthersAtUnload() {
    static_cast<void>(std::atexit(freeOthers));
}

}  // namespace

// The system's list of whom to tell of threads has this section between the runtime's.
extern "C" __attribute__((section(".CRT$XLX"), used)) const PIMAGE_TLS_CALLBACK vokGiveBack =
    giveBack;

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(globalsOfThread());
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(globalsOfThread());
}

}  // namespace __cxxabiv1
