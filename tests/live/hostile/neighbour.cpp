// Another program that gets into the library's way, until it is ended or told to go on:
// live_neighbour READY GO pipe|file|mutex NAME
// READY and GO name events: it sets the first once it stands in the way, and dies at the second
// without giving back what it holds.
#include <windows.h>

#include <cstring>

namespace {

bool takePipe(const char* name) {
    constexpr DWORD one_instance = 1;
    return CreateNamedPipeA(name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, one_instance, 64, 64, 0,
                            nullptr) != INVALID_HANDLE_VALUE;
}

bool takeFile(const char* name) {
    return CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr) != INVALID_HANDLE_VALUE;
}

bool takeMutex(const char* name) {
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    return mutex != nullptr && WaitForSingleObject(mutex, INFINITE) == WAIT_OBJECT_0;
}

bool take(const char* what, const char* name) {
    if (std::strcmp(what, "pipe") == 0)
        return takePipe(name);
    return std::strcmp(what, "file") == 0 ? takeFile(name) : takeMutex(name);
}

}  // namespace

int main(int count, char** words) {
    if (count != 5 || !take(words[3], words[4]))
        return 2;
    const HANDLE ready = OpenEventA(EVENT_MODIFY_STATE, FALSE, words[1]);
    const HANDLE go = OpenEventA(SYNCHRONIZE, FALSE, words[2]);
    SetEvent(ready);
    WaitForSingleObject(go, INFINITE);
    TerminateProcess(GetCurrentProcess(), 3);
}
