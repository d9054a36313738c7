#include "processes.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

// What a start and its failure have in common.
DWORD startError(System& system, const char* application, const char* commandLine) {
    const std::string program =
        std::string(application ? application : "") + (commandLine ? commandLine : "");
    return system.processes.refusal(program);
}

void announce(Call& call, Start start) {
    Processes& processes = call.system().processes;
    processes.starts.push_back(start);
    if (const auto hook = processes.onStart) {
        call.unlocked([&] { hook(start); });
    }
}

UINT WINAPI winExec(LPCSTR commandLine, UINT show) {
    Call call("WinExec", commandLine, show);
    if (call.fails()) {
        return call.failed<UINT>();
    }
    if (const DWORD error = startError(call.system(), nullptr, commandLine)) {
        return call.done(UINT{error}, error);
    }
    Start start;
    start.commandLine = commandLine;
    start.show = show;
    announce(call, std::move(start));
    return call.done(UINT{33});
}

std::string startupText(const STARTUPINFOA* startup) {
    const char* desktop = startup->lpDesktop;
    return "startup{" + std::to_string(startup->cb) + ", desktop=" + describe(desktop) +
           ", flags=" + std::to_string(startup->dwFlags) + "}";
}

struct Creation {
    StartedBy by;
    HANDLE token;
    LPCSTR application;
    LPSTR commandLine;
    LPVOID environment;
    LPSTARTUPINFOA startup;
    LPPROCESS_INFORMATION information;
};

BOOL create(Call& call, const Creation& given) {
    System& system = call.system();
    if (const DWORD error = startError(system, given.application, given.commandLine)) {
        return call.done(FALSE, error);
    }
    given.information->hProcess = system.handles.open(Kind::process);
    given.information->hThread = system.handles.open(Kind::thread);
    given.information->dwProcessId = 0x2000 + numberOf(given.information->hProcess);
    given.information->dwThreadId = 0x3000 + numberOf(given.information->hThread);
    Start start;
    start.by = given.by;
    start.application = given.application ? given.application : "";
    start.commandLine = given.commandLine ? given.commandLine : "";
    start.desktop = given.startup->lpDesktop ? given.startup->lpDesktop : "";
    start.token = given.token ? handleName(given.token) : "";
    start.hasEnvironment = given.environment != nullptr;
    start.process = given.information->hProcess;
    start.thread = given.information->hThread;
    announce(call, std::move(start));
    return call.done(TRUE, handleName(given.information->hProcess) + ", " +
                               handleName(given.information->hThread));
}

BOOL WINAPI createProcessA(LPCSTR application, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                           LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                           LPVOID environment, LPCSTR directory, LPSTARTUPINFOA startup,
                           LPPROCESS_INFORMATION information) {
    Call call("CreateProcessA", application, static_cast<const char*>(commandLine),
              static_cast<const SECURITY_ATTRIBUTES*>(process),
              static_cast<const SECURITY_ATTRIBUTES*>(thread), inherit, hex(flags),
              static_cast<const void*>(environment), directory, startupText(startup),
              Out{information});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    return create(call, {StartedBy::createProcess, nullptr, application, commandLine, environment,
                         startup, information});
}

BOOL WINAPI createProcessAsUserA(HANDLE token, LPCSTR application, LPSTR commandLine,
                                 LPSECURITY_ATTRIBUTES process, LPSECURITY_ATTRIBUTES thread,
                                 BOOL inherit, DWORD flags, LPVOID environment, LPCSTR directory,
                                 LPSTARTUPINFOA startup, LPPROCESS_INFORMATION information) {
    Call call("CreateProcessAsUserA", token, application, static_cast<const char*>(commandLine),
              static_cast<const SECURITY_ATTRIBUTES*>(process),
              static_cast<const SECURITY_ATTRIBUTES*>(thread), inherit, hex(flags),
              static_cast<const void*>(environment), directory, startupText(startup),
              Out{information});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (!call.system().handles.isOpen(token)) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    return create(call, {StartedBy::createProcessAsUser, token, application, commandLine,
                         environment, startup, information});
}

DWORD WINAPI waitForInputIdle(HANDLE process, DWORD milliseconds) {
    Call call("WaitForInputIdle", process, milliseconds);
    System& system = call.system();
    system.clock.advance(std::min(system.processes.idleMilliseconds, milliseconds));
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    if (!system.handles.isOpen(process)) {
        call.complain("not an open process: " + handleName(process));
        return call.done(WAIT_FAILED, DWORD{ERROR_INVALID_HANDLE});
    }
    if (const auto hook = system.processes.whileIdleWait) {
        call.unlocked(hook);
    }
    const DWORD result = system.processes.idleResult;
    return call.done(result, DWORD{result == WAIT_FAILED ? ERROR_INVALID_HANDLE : 0ul});
}

DWORD WINAPI getCurrentProcessId() {
    System* system = System::find();
    return system ? system->processes.ownId : real.getCurrentProcessId();
}

// The runtime names its threads by it: it takes no lock.
DWORD WINAPI getCurrentThreadId() {
    const DWORD given = System::threadId();
    return given ? given : real.getCurrentThreadId();
}

}  // namespace

DWORD Processes::refusal(const std::string& program) const {
    for (const auto& [text, error] : refused_) {
        if (program.find(text) != std::string::npos) {
            return error;
        }
    }
    return 0;
}

HANDLE Processes::open() {
    return System::current().handles.open(Kind::process);
}

std::span<const Substitute> processSubstitutes() {
    static const Substitute all[] = {
        substitute("WinExec", winExec),
        substitute("CreateProcessA", createProcessA),
        substitute("CreateProcessAsUserA", createProcessAsUserA),
        substitute("WaitForInputIdle", waitForInputIdle),
        substitute("GetCurrentProcessId", getCurrentProcessId),
        substitute("GetCurrentThreadId", getCurrentThreadId),
    };
    return all;
}

}  // namespace vok::test
