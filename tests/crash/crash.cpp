// A host that dies inside the library and leaves a dump: crash LIBRARY DUMP
// Exit status: 0 the dump is written, 2 it could not be brought so far.
#include <vok/vok.h>
#include <windows.h>

#include <array>
#include <bit>
#include <cstdio>

#include <dbghelp.h>

namespace {

const char* dump = nullptr;

LONG WINAPI writeDump(EXCEPTION_POINTERS* pointers) {
    const HANDLE file =
        CreateFileA(dump, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    MINIDUMP_EXCEPTION_INFORMATION exception = {GetCurrentThreadId(), pointers, FALSE};
    const BOOL written = MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file,
                                           MiniDumpNormal, &exception, nullptr, nullptr);
    ExitProcess(written != 0 ? 0 : 2);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("crash LIBRARY DUMP\n", stderr);
        return 2;
    }
    dump = argv[2];
    const HMODULE library = LoadLibraryA(argv[1]);
    if (library == nullptr) {
        std::fprintf(stderr, "can't load %s, error %lu\n", argv[1], GetLastError());
        return 2;
    }
    const auto send =
        std::bit_cast<VOKSendMsgFn>(GetProcAddress(library, VOK_EXPORT_SEND_DRAL_MSG));
    if (send == nullptr) {
        std::fputs("the library has no such export\n", stderr);
        return 2;
    }
    SetUnhandledExceptionFilter(writeDump);
    const std::array<char, VOK_DRAL_BLOCK_SIZE> block = {};
    // A record that was freed long ago: nobody can tell it from a good one but by reading it.
    void* const gone = VirtualAlloc(nullptr, sizeof(VKDATA), MEM_RESERVE, PAGE_NOACCESS);
    send(block.data(), SM_OPENJOB, static_cast<VKDATA*>(gone));
    std::fputs("it did not crash\n", stderr);
    return 2;
}
