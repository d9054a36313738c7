// What the system reads of a DLL or program before it runs it: where the calls by address may go
// (the linker makes that table), and that what it imports is looked for in the system's folder
// alone.

#include <cstdint>

namespace {

// Each call by address goes through one of these two. A system that knows them puts its own in
// their place; on all others everything may be called.
using Check = void (*)(const void* target);
using Dispatch = void (*)();

void checkNothing(const void* /*target*/) {}

__attribute__((naked)) void callWithoutCheck() {
    asm("jmp *%rax");
}

// IMAGE_LOAD_CONFIG_DIRECTORY64 as it has been since Windows 10; the headers end earlier.
struct LoadConfig {
    std::uint32_t size;
    std::uint32_t timeToHeaps[18];
    std::uint16_t csdVersion;
    std::uint16_t dependentLoadFlags;
    std::uint64_t editListToHandlers[4];
    const Check* check;
    const Dispatch* dispatch;
    const char* functionTable;
    const char* functionCount;
    std::uint32_t guardFlags;
    std::uint32_t codeIntegrity[3];
    const char* importTable;
    const char* importCount;
    const char* longJumpTable;
    const char* longJumpCount;
};
static_assert(sizeof(LoadConfig) == 192);

constexpr std::uint16_t loadLibrarySearchSystem32 = 0x800;
// Instrumented, with a table of functions and one of long jumps.
constexpr std::uint32_t guardFlags = 0x100 | 0x400 | 0x10000;

}  // namespace

extern "C" {

// The linker's.
extern const char __guard_fids_table[];
extern const char __guard_fids_count[];
extern const char __guard_iat_table[];
extern const char __guard_iat_count[];
extern const char __guard_longjmp_table[];
extern const char __guard_longjmp_count[];

extern const Check __guard_check_icall_fptr;
extern const Dispatch __guard_dispatch_icall_fptr;
__attribute__((section(".00cfg"), used)) const Check __guard_check_icall_fptr = checkNothing;
__attribute__((section(".00cfg"), used)) const Dispatch __guard_dispatch_icall_fptr =
    callWithoutCheck;

extern const LoadConfig _load_config_used;
__attribute__((used)) const LoadConfig _load_config_used = {
    .size = sizeof(LoadConfig),
    .timeToHeaps = {},
    .csdVersion = 0,
    .dependentLoadFlags = loadLibrarySearchSystem32,
    .editListToHandlers = {},
    .check = &__guard_check_icall_fptr,
    .dispatch = &__guard_dispatch_icall_fptr,
    .functionTable = __guard_fids_table,
    .functionCount = __guard_fids_count,
    .guardFlags = guardFlags,
    .codeIntegrity = {},
    .importTable = __guard_iat_table,
    .importCount = __guard_iat_count,
    .longJumpTable = __guard_longjmp_table,
    .longJumpCount = __guard_longjmp_count,
};

}  // extern "C"
