// Programs that the library starts, sessions, and the users' tokens.
#pragma once
#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vok::test {

enum class StartedBy { winExec, createProcess, createProcessAsUser };

// One successful start.
struct Start {
    StartedBy by = StartedBy::winExec;
    std::string application;  // empty when the command line names it
    std::string commandLine;
    UINT show = 0;        // WinExec's
    std::string desktop;  // of the start-up block
    std::string token;    // "token#1", or empty
    bool hasEnvironment = false;
    HANDLE process = nullptr;  // null for WinExec
    HANDLE thread = nullptr;
    bool mentions(const std::string& text) const {
        return (application + commandLine).find(text) != std::string::npos;
    }
};

class Processes {
  public:
    std::vector<Start> starts;
    // Runs after every successful start, without the lock: may add windows, pipe clients, ….
    std::function<void(const Start&)> onStart;
    // A start whose application or command line holds the text fails with that error (WinExec
    // returns it).
    void refuse(const std::string& text, DWORD error) { refused_[text] = error; }
    DWORD refusal(const std::string& program) const;

    DWORD idleResult = 0;                 // of WaitForInputIdle
    DWORD idleMilliseconds = 0;           // how far it moves the clock; at most the given time-out
    std::function<void()> whileIdleWait;  // runs in WaitForInputIdle

    DWORD ownId = 0x1A2C;  // GetCurrentProcessId

    // A process as an earlier call would have left it in the job record.
    HANDLE open();

  private:
    std::map<std::string, DWORD> refused_;
};

struct Sessions {
    DWORD console = 1;           // the session at the screen
    DWORD own = 1;               // the spooler's
    DWORD userTokenError = 0;    // not 0: WTSQueryUserToken fails with it (1008: nobody there)
    DWORD environmentError = 0;  // not 0: CreateEnvironmentBlock fails with it
    BOOL wow64Result = TRUE;     // of IsWow64Process; the flag that it reports is FALSE
    std::map<DWORD, std::string> impersonating;  // by thread: "self" or a token's name
};

}  // namespace vok::test
