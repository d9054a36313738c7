/**
 * @file main.cpp
 * A companion. The same program is DRAL or NEMB by the name of its file.
 *
 * The library starts it with the printer's name on the command line; it serves that printer by both
 * routes at once until somebody sends WM_CLOSE to its window. One of each runs for a printer: a
 * second one ends at once.
 */
#include <vok/companion.h>
#include <windows.h>

#include <array>
#include <cctype>
#include <optional>
#include <string>

#include "common/machine.h"
#include "common/settings.h"
#include "common/trace.h"
#include "companion.h"
#include "companion/windows.h"
#include "pipe_client.h"

namespace vok::sample {
namespace {

constexpr int exit_misused = 2;
constexpr int exit_failed = 1;

std::string ownPath() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

std::string mutexName(const Companion& companion) {
    std::string title = companion.title();
    for (char& letter : title)
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return VOK_MUTEX_PREFIX + title;
}

void serveMessages() {
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

/// Waits as a program does that still loads: idle, but without a window.
void serveMessagesFor(DWORD milliseconds) {
    const UINT_PTR timer = SetTimer(nullptr, 0, milliseconds, nullptr);
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0 && message.message != WM_TIMER)
        DispatchMessageA(&message);
    KillTimer(nullptr, timer);
}

/// False when the companion is to end instead of making its windows.
bool passStartup(Companion& companion) {
    const ScriptedReply script = companion.startup();
    if (script.kind == ScriptedReply::Kind::Die) {
        companion.say("dies at its start");
        return false;
    }
    if (script.kind == ScriptedReply::Kind::Never)
        serveMessages();
    if (script.delay != 0)
        serveMessagesFor(script.delay);
    return true;
}

int runCompanion(Companion& companion) {
    // Kept until the program ends: by it the library sees from another session that we run.
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, mutexName(companion).c_str());
    const DWORD error = GetLastError();
    if (mutex == nullptr)
        companion.say(withError("the mutex can't be made", error));
    if (mutex != nullptr && error == ERROR_ALREADY_EXISTS) {
        companion.say("runs already, this one ends");
        return 0;
    }
    companion.say("started: " + std::string(GetCommandLineA()));
    if (!passStartup(companion) || !makeWindows(companion))
        return exit_failed;
    if (!startPipeClients(companion)) {
        companion.say(withError("a pipe's thread can't be started", GetLastError()));
        return exit_failed;
    }
    serveMessages();
    companion.say("ends");
    return 0;
}

int run() {
    const std::string path = ownPath();
    const std::optional<Identity> identity = parseFileName(path);
    const std::optional<std::string> printer = parsePrinter(GetCommandLineA());
    if (!identity || !printer) {
        trace("companion", "neither DRAL nor NEMB of a printer: " + path + ", command line " +
                               GetCommandLineA());
        return exit_misused;
    }
    serveModel(identity->prefix);
    // Never destroyed: the pipe's thread uses it until the process is gone.
    static Companion companion(*identity, *printer);
    return runCompanion(companion);
}

}  // namespace
}  // namespace vok::sample

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    const int status = vok::sample::run();
    // Ends the pipe's thread wherever it is, before anything that it uses is torn down.
    ExitProcess(static_cast<UINT>(status));
}
