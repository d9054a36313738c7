// Gives back the thread-local slots that the linked-in runtime takes at the first throw and would
// keep: a process has about a thousand, so a host that loads and unloads the library for every job
// would run out of them after as many jobs, and the throw after that would end it.

#include <windows.h>

#include <array>
#include <cstdlib>

extern "C" {

// The linker sends the runtime's registration of a slot here (--wrap), and ours on to the runtime.
int __real____w64_mingwthr_add_key_dtor(DWORD slot, void (*destructor)(void*));
int __wrap____w64_mingwthr_add_key_dtor(DWORD slot, void (*destructor)(void*));

}  // extern "C"

namespace {

struct Slots {
    std::array<DWORD, 8> taken;
    std::size_t count;
};

Slots slots;

// The slots' contents were freed with their threads, and this one's before.
void giveBack() {
    for (std::size_t i = 0; i < slots.count; ++i) {
        TlsFree(slots.taken[i]);
    }
    slots.count = 0;
}

// Registered before anything else, hence run after everything else that may throw.
__attribute__((constructor(102))) void prepare() {
    std::atexit(giveBack);
}

}  // namespace

// The runtime takes a slot once, guarded by a lock of its own.
int __wrap____w64_mingwthr_add_key_dtor(DWORD slot, void (*destructor)(void*)) {
    if (slots.count < slots.taken.size()) {
        slots.taken[slots.count] = slot;
        ++slots.count;
    }
    return __real____w64_mingwthr_add_key_dtor(slot, destructor);
}
