// A companion with one fault, which its model prefix names: TITLDRAL.EXE gets its title wrong, and
// is right in everything else. DEMODRAL.EXE has no fault.
#include <vok/companion.h>
#include <windows.h>

#include <array>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "companion/command_line.h"

namespace {

using vok::sample::Identity;
using vok::sample::Role;

// Holds the window's answers back while it is held.
CRITICAL_SECTION answering;
Identity identity{Role::Dral, ""};
std::string printer;
int opened = 0;

bool isDral() {
    return identity.role == Role::Dral;
}

// The faults, by the prefix that asks for them.
bool has(const char* fault) {
    return identity.prefix == fault;
}

std::string title() {
    return identity.prefix + (isDral() ? VOK_DRAL_TITLE : VOK_NEMB_TITLE) +
           (has("TITL") ? "" : printer);
}

// Longer than any check waits.
void takeItsTime() {
    constexpr DWORD longTime = 300000;
    if (has("LATE")) {
        Sleep(longTime);
    }
}

LRESULT answer(DWORD event) {
    takeItsTime();
    if (has("CANC") && event == SM_CANCELJOB && opened == 0) {
        Sleep(INFINITE);  // has no job to cancel, and waits for one
    }
    if (event == SM_OPENJOB && ++opened == 2 && has("DIES")) {
        TerminateProcess(GetCurrentProcess(), 3);  // good for one job
    }
    return has("WORD") ? LRESULT{0x100000001} : LRESULT{YESPRINT};
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_COPYDATA) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    EnterCriticalSection(&answering);
    const LRESULT reply =
        answer(static_cast<DWORD>(reinterpret_cast<const COPYDATASTRUCT*>(lParam)->dwData));
    LeaveCriticalSection(&answering);
    return reply;
}

void makeWindow(const std::string& className, const std::string& windowTitle) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = className.c_str();
    RegisterClassA(&windowClass);
    CreateWindowExA(0, className.c_str(), windowTitle.c_str(), WS_OVERLAPPED, 0, 0, 1, 1, nullptr,
                    nullptr, windowClass.hInstance, nullptr);
}

void makeWindows() {
    if (!isDral()) {
        makeWindow(has("CLAS") ? "NEMB" : identity.prefix + VOK_NEMB_TITLE, title());
        return;
    }
    const std::string hidden = VOK_DRAL_HIDDEN + printer;
    if (!has("HIDE")) {
        makeWindow(hidden, hidden);
    }
    makeWindow("a class of its own", title());
}

// False when another one has the mutex: one is enough for a printer.
bool takeMutex() {
    std::string name = has("SING") ? "SING" : title();
    if (has("SING") || has("MUTX") || isDral()) {
        name = "of its own: " + name + (isDral() ? "DRAL" : "NEMB");
    } else {
        for (char& letter : name) {
            letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        }
        name = VOK_MUTEX_PREFIX + name;
    }
    CreateMutexA(nullptr, FALSE, name.c_str());
    return has("TWIN") || GetLastError() != ERROR_ALREADY_EXISTS;
}

DWORD frameSize() {
    if (has("FRAM")) {
        return isDral() ? VOK_DRAL_BLOCK_SIZE - 4 : VOK_NEMB_BLOCK_SIZE;
    }
    return isDral() ? sizeof(VokDralFrame) : sizeof(VokNembFrame);
}

// False when the host is slower than this companion likes.
bool hostIsQuick(HANDLE pipe) {
    constexpr DWORD patience = 700;
    const DWORD start = GetTickCount();
    DWORD available = 0;
    while (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) != 0 && available == 0) {
        if (GetTickCount() - start > patience) {
            return false;
        }
        Sleep(1);
    }
    return true;
}

bool readFrame(HANDLE pipe, std::vector<BYTE>& frame) {
    if (has("IDLE") && opened != 0 && !hostIsQuick(pipe)) {
        return false;
    }
    DWORD have = 0;
    while (have < frame.size()) {
        DWORD count = 0;
        if (ReadFile(pipe, frame.data() + have, static_cast<DWORD>(frame.size()) - have, &count,
                     nullptr) == 0 ||
            count == 0) {
            return false;
        }
        have += count;
    }
    return true;
}

void serve(HANDLE pipe) {
    std::vector<BYTE> frame(frameSize());
    DWORD event = 0;
    while (readFrame(pipe, frame)) {
        std::memcpy(&event, frame.data(), sizeof event);
        opened += event == SM_OPENJOB ? 1 : 0;
        takeItsTime();
        const LONG reply = YESPRINT;
        DWORD written = 0;
        WriteFile(pipe, &reply, has("SHRT") ? 2 : sizeof reply, &written, nullptr);
    }
    const bool ended = event == SM_CLOSEJOB || event == SM_CANCELJOB;
    if (has("LOST") && event != 0 && !ended) {
        TerminateProcess(GetCurrentProcess(), 3);  // can't do without its host
    }
}

DWORD WINAPI servePipes(void* /*unused*/) {
    const std::string name = (isDral() ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) + printer;
    for (bool first = true; first || !has("ONCE");) {
        const HANDLE pipe = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        if (pipe == INVALID_HANDLE_VALUE) {
            Sleep(10);
            continue;
        }
        first = false;
        if (has("BUSY")) {
            EnterCriticalSection(&answering);
        }
        serve(pipe);
        if (has("BUSY")) {
            LeaveCriticalSection(&answering);
        }
        CloseHandle(pipe);
    }
    return 0;
}

std::string ownPath() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

int run() {
    const auto name = vok::sample::parseFileName(ownPath());
    const auto served = vok::sample::parsePrinter(GetCommandLineA());
    if (!name || !served) {
        return 2;
    }
    identity = *name;
    printer = *served;
    InitializeCriticalSection(&answering);
    if (!takeMutex()) {
        return 0;
    }
    makeWindows();
    if (!has("NOPI")) {
        CreateThread(nullptr, 0, servePipes, nullptr, 0, nullptr);
    }
    if (has("HANG")) {
        Sleep(INFINITE);  // windows and pipe, and nobody who serves the windows
    }
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    return 0;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    ExitProcess(static_cast<UINT>(run()));
}
