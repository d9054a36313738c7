#include "pipe_client.h"

#include <string>
#include <vector>

#include <cstring>

#include "common/agreement.h"

namespace vok::sample {
namespace {

/// Pause between two looks for a pipe that is not there yet.
constexpr DWORD look_again = 20;

HANDLE openPipe(const std::string& name) {
    for (;;) {
        const HANDLE pipe = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        if (pipe != INVALID_HANDLE_VALUE)
            return pipe;
        Sleep(look_again);
    }
}

/// Reads a whole frame, which may come in several pieces. False when the pipe ends before.
bool readFrame(HANDLE pipe, std::vector<BYTE>& frame) {
    DWORD have = 0;
    const DWORD size = static_cast<DWORD>(frame.size());
    while (have < size) {
        DWORD count = 0;
        if (ReadFile(pipe, frame.data() + have, size - have, &count, nullptr) == 0 || count == 0)
            return false;
        have += count;
    }
    return true;
}

/// NEMB's frames begin with the event. DRAL's are the bare block, and ours tells the event inside.
ScriptedReply answerFrame(Companion& companion, const std::vector<BYTE>& frame) {
    DWORD event = 0;
    static_assert(offsetof(DralBlock, event) == 0 && offsetof(VokNembFrame, messageId) == 0);
    std::memcpy(&event, frame.data(), sizeof event);
    const std::size_t header = frame.size() - companion.blockSize();
    return companion.answer(event, frame.data() + header, "pipe");
}

void serve(Companion& companion, HANDLE pipe) {
    std::vector<BYTE> frame(companion.identity().role == Role::Nemb ? sizeof(VokNembFrame)
                                                                    : sizeof(VokDralFrame));
    while (readFrame(pipe, frame)) {
        const ScriptedReply scripted = answerFrame(companion, frame);
        const VokPipeReply reply{scripted.reply};
        DWORD written = 0;
        if (scripted.bytes != 0)
            WriteFile(pipe, &reply, scripted.bytes, &written, nullptr);
        if (scripted.bytes == 0)
            return;  // Answering nothing at all means to hang up.
    }
}

DWORD WINAPI run(void* argument) {
    Companion& companion = *static_cast<Companion*>(argument);
    const std::string name =
        (companion.identity().role == Role::Dral ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) +
        companion.printer();
    for (;;) {
        const HANDLE pipe = openPipe(name);
        companion.say("opened " + name);
        serve(companion, pipe);
        CloseHandle(pipe);
        companion.say("closed " + name);
    }
}

}  // namespace

bool startPipeClients(Companion& companion) {
    for (int client = 0; client < VOK_PIPE_INSTANCES; ++client) {
        const HANDLE thread = CreateThread(nullptr, 0, run, &companion, 0, nullptr);
        if (thread == nullptr)
            return false;
        CloseHandle(thread);
    }
    return true;
}

}  // namespace vok::sample
