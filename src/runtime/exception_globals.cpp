// What the C++ runtime keeps for each thread about its exceptions. The runtime's own version takes
// memory for it at a thread's first throw and ends the process when there is none: just when a
// throw says that memory ran out. Ours has a reserve.

#include <cxxabi.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>

// Of mingw-w64's start-up code, not of the compiler's libraries: calls the destructor at each
// thread's end with the slot's value, as far as there is one.
extern "C" int __mingwthr_key_dtor(DWORD slot, void (*destructor)(void*));

namespace {

// The layout is the C++ ABI's.
struct Globals {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

struct Reserved {
    std::atomic<DWORD> owner;  // thread; 0: free
    Globals globals;
};

// Threads at a time that can be out of memory at their first exception.
constexpr std::size_t reserveSize = 64;

constinit std::array<Reserved, reserveSize> reserve = {};
constinit DWORD slot = TLS_OUT_OF_INDEXES;

Globals* claim(DWORD currentOwner, DWORD newOwner) {
    for (Reserved& reserved : reserve) {
        DWORD expected = currentOwner;
        if (reserved.owner.compare_exchange_strong(expected, newOwner)) {
            return &reserved.globals;
        }
    }
    return nullptr;
}

Globals* fromReserve() {
    const DWORD thread = GetCurrentThreadId();
    Globals* globals = claim(thread, thread);
    if (globals == nullptr) {
        globals = claim(0, thread);
    }
    return globals;
}

void giveBack(void* value) {
    // At an unload static objects are destroyed after this.
    TlsSetValue(slot, nullptr);
    const auto found = std::find_if(reserve.begin(), reserve.end(), [value](const auto& reserved) {
        return value == &reserved.globals;
    });
    if (found == reserve.end()) {
        std::free(value);
        return;
    }
    found->globals = {};
    found->owner = 0;
}

// A process has about a thousand slots: a host that loads and unloads the library for every job
// would run out of them. The runtime's own version keeps the one it takes.
void freeSlot() {
    TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
}

// Before every initialiser that may throw; the slot is therefore freed after everything else.
__attribute__((constructor(102))) void allocateSlot() {
    slot = TlsAlloc();
    if (slot == TLS_OUT_OF_INDEXES) {
        return;
    }
    __mingwthr_key_dtor(slot, giveBack);
    // Where that can't be remembered the slot is kept.
    static_cast<void>(std::atexit(freeSlot));
}

Globals* makeGlobals() {
    if (slot == TLS_OUT_OF_INDEXES) {
        return fromReserve();
    }
    void* memory = std::calloc(1, sizeof(Globals));
    auto* globals = memory == nullptr ? fromReserve() : static_cast<Globals*>(memory);
    if (globals != nullptr && TlsSetValue(slot, globals) == 0 && memory != nullptr) {
        std::free(memory);
        return fromReserve();
    }
    return globals;
}

Globals* globalsOfThread() {
    const DWORD lastError = GetLastError();
    auto* globals = slot == TLS_OUT_OF_INDEXES ? nullptr : static_cast<Globals*>(TlsGetValue(slot));
    if (globals == nullptr) {
        globals = makeGlobals();
    }
    if (globals == nullptr) {
        std::abort();
    }
    SetLastError(lastError);
    return globals;
}

}  // namespace

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(globalsOfThread());
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(globalsOfThread());
}

}  // namespace __cxxabiv1
