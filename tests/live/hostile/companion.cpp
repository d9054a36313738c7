// A companion that misbehaves in its pipe, as the value "Hostile" of its key says: "flood" writes
// answers without an end and without being asked, "twice" connects a second time before it serves.
// It has the windows by which it is found, and nothing of the message route.
#include <vok/companion.h>
#include <windows.h>

#include <string>
#include <vector>

#include "common/settings.h"
#include "common/trace.h"
#include "companion/command_line.h"

namespace {

using vok::sample::Identity;
using vok::sample::Role;

Identity identity{Role::Dral, ""};
std::string printer;

std::string roleName() {
    return vok::sample::roleName(identity.role);
}

HANDLE open(const std::string& name) {
    return CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                       FILE_FLAG_OVERLAPPED, nullptr);
}

/// One transfer of a pipe that another thread uses at the same time. The bytes moved, or 0.
DWORD transfer(HANDLE pipe, bool write, void* data, DWORD size) {
    OVERLAPPED overlapped{};
    overlapped.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    DWORD moved = 0;
    const BOOL begun = write ? WriteFile(pipe, data, size, nullptr, &overlapped)
                             : ReadFile(pipe, data, size, nullptr, &overlapped);
    if ((begun == 0 && GetLastError() != ERROR_IO_PENDING) ||
        GetOverlappedResult(pipe, &overlapped, &moved, TRUE) == 0)
        moved = 0;
    CloseHandle(overlapped.hEvent);
    return moved;
}

bool readFrame(HANDLE pipe, std::vector<char>& frame) {
    for (std::size_t have = 0; have < frame.size();) {
        const DWORD moved =
            transfer(pipe, false, frame.data() + have, static_cast<DWORD>(frame.size() - have));
        if (moved == 0)
            return false;
        have += moved;
    }
    return true;
}

DWORD WINAPI swallow(void* pipe) {
    std::vector<char> bytes(4096);
    while (transfer(pipe, false, bytes.data(), static_cast<DWORD>(bytes.size())) != 0) {
    }
    return 0;
}

void flood(HANDLE pipe) {
    const HANDLE reader = CreateThread(nullptr, 0, swallow, pipe, 0, nullptr);
    std::vector<LONG> answers(4096, 7);
    while (transfer(pipe, true, answers.data(),
                    static_cast<DWORD>(answers.size() * sizeof answers[0])) != 0) {
    }
    vok::sample::trace(roleName(), "the flood is over");
    WaitForSingleObject(reader, INFINITE);
    CloseHandle(reader);
}

void connectTwice(HANDLE pipe, const std::string& name) {
    const HANDLE second = open(name);
    const DWORD error = second == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    vok::sample::trace(roleName(), "the second connection: error " + std::to_string(error));
    std::vector<char> frame(identity.role == Role::Dral ? sizeof(VokDralFrame)
                                                        : sizeof(VokNembFrame));
    LONG answer = YESPRINT;
    while (readFrame(pipe, frame))
        transfer(pipe, true, &answer, sizeof answer);
    if (second != INVALID_HANDLE_VALUE)
        CloseHandle(second);
}

DWORD WINAPI serve(void*) {
    const bool dral = identity.role == Role::Dral;
    const std::string name = (dral ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) + printer;
    const std::string how =
        vok::sample::readSetting(vok::sample::companion_key + roleName(), "Hostile");
    for (;;) {
        const HANDLE pipe = open(name);
        if (pipe == INVALID_HANDLE_VALUE) {
            Sleep(20);
            continue;
        }
        if (how == "flood")
            flood(pipe);
        else
            connectTwice(pipe, name);
        CloseHandle(pipe);
    }
}

void makeWindow() {
    const std::string title =
        identity.prefix + (identity.role == Role::Dral ? VOK_DRAL_TITLE : VOK_NEMB_TITLE) + printer;
    CreateWindowExA(0, "STATIC", title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, nullptr, nullptr,
                    nullptr, nullptr);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    const auto who = vok::sample::parseFileName(path);
    const auto forWhom = vok::sample::parsePrinter(GetCommandLineA());
    if (!who || !forWhom)
        return 2;
    identity = *who;
    printer = *forWhom;
    vok::sample::serveModel(identity.prefix);
    makeWindow();
    CloseHandle(CreateThread(nullptr, 0, serve, nullptr, 0, nullptr));
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0)
        DispatchMessageA(&message);
    return 0;
}
