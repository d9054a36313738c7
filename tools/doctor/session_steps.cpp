// Sessions, the route that follows from them, and the user's token.

#include <windows.h>

#include <winsvc.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "common/other_session.h"
#include "common/system_text.h"
#include "examination.h"
#include "launch/system_library.h"
#include "launch/user_session.h"

namespace vok::doctor {

namespace {

using CreateEnvironmentBlockFn = BOOL(WINAPI*)(void**, HANDLE, BOOL);
using DestroyEnvironmentBlockFn = BOOL(WINAPI*)(void*);

constexpr DWORD noSession = 0xFFFFFFFF;

// Process id of the spooler's service; 0 when it does not run or the system does not tell.
DWORD spoolerProcess() {
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    if (manager == nullptr) {
        return 0;
    }
    const SC_HANDLE service = OpenServiceA(manager, "Spooler", SERVICE_QUERY_STATUS);
    SERVICE_STATUS_PROCESS status = {};
    DWORD needed = 0;
    if (service != nullptr) {
        QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                             sizeof status, &needed);
        CloseServiceHandle(service);
    }
    CloseServiceHandle(manager);
    return status.dwProcessId;
}

// The session that the library would see itself in, with where that was learnt.
DWORD spoolerSession(const Examination& examination, DWORD ownSession, std::string& origin) {
    if (examination.options.spoolerSession) {
        origin = "as told";
        return static_cast<DWORD>(*examination.options.spoolerSession);
    }
    const DWORD process = spoolerProcess();
    DWORD session = 0;
    if (process != 0 && ProcessIdToSessionId(process, &session) != 0) {
        origin = "service, process " + std::to_string(process);
        return session;
    }
    origin = "taken to be this one: its service is not seen to run";
    return ownSession;
}

void checkUserSession(Examination& examination, DWORD console, DWORD own, const std::string& text) {
    if (console == noSession) {
        examination.report.problem("sessions", Trouble::NoConsole, text);
        return;
    }
    // A service, in session 0, has no user before it who could be in the wrong place.
    if (own != console && own != 0) {
        examination.report.problem("sessions", Trouble::WrongSession, text);
        return;
    }
    examination.report.ok("sessions", text);
}

// What the library does with a token before it starts anything. False with the error.
bool environmentCanBeMade(HANDLE token, DWORD& error) {
    const HMODULE library = loadSystemLibrary("userenv.dll");
    const auto create =
        systemProcedure<CreateEnvironmentBlockFn>(library, "CreateEnvironmentBlock");
    const auto destroy =
        systemProcedure<DestroyEnvironmentBlockFn>(library, "DestroyEnvironmentBlock");
    void* environment = nullptr;
    if (create == nullptr || create(&environment, token, FALSE) == 0) {
        error = GetLastError();
        return false;
    }
    if (destroy != nullptr) {
        destroy(environment);
    }
    return true;
}

void reportNoToken(Examination& examination, bool needed, DWORD error) {
    const bool forbidden = error == ERROR_PRIVILEGE_NOT_HELD;
    const std::string text = "WTSQueryUserToken: " + tools::errorText(error) +
                             (needed ? "" : "; not needed on this route");
    examination.report.complain(needed && !forbidden, "user token",
                                forbidden ? Trouble::TokenPrivilege : Trouble::NoUserToken, text);
}

}  // namespace

void examineSessions(Examination& examination) {
    if (!hasSessions(examination.family)) {
        examination.report.ok("sessions", "this system has none");
        examination.report.ok("route", "window messages");
        return;
    }
    DWORD own = 0;
    ProcessIdToSessionId(GetCurrentProcessId(), &own);
    std::string origin;
    const DWORD spooler = spoolerSession(examination, own, origin);
    // From here on the library's own code sees what it would see inside the spooler.
    sample::moveToSession(GetModuleHandleA(nullptr), spooler);
    std::uint32_t console = 0;
    std::uint32_t seen = 0;
    FindOutSessionInfo(&console, &seen);
    checkUserSession(examination, console, own,
                     "console " + std::to_string(static_cast<std::int32_t>(console)) +
                         ", spooler " + std::to_string(seen) + " (" + origin + "), you " +
                         std::to_string(own));
    examination.spoolerApart = spoolerIsApart();
    examination.report.ok("route",
                          examination.spoolerApart
                              ? "pipes: the spooler is not in the console's session"
                              : "window messages: the spooler is in the console's session");
}

void examineUserToken(Examination& examination) {
    constexpr const char* step = "user token";
    if (!hasSessions(examination.family)) {
        examination.report.ok(step, "not asked for on this system");
        return;
    }
    const bool needed = examination.spoolerApart ||
                        std::any_of(examination.printers.begin(), examination.printers.end(),
                                    [](const Printer& printer) { return printer.networkPort; });
    HANDLE token = nullptr;
    std::uint32_t error = 0;
    if (GetUserTokenWts(&token, &error) == 0) {
        reportNoToken(examination, needed, error);
        return;
    }
    DWORD environmentError = 0;
    if (environmentCanBeMade(token, environmentError)) {
        examination.report.ok(step, needed ? "to be had, with its environment"
                                           : "to be had, though not needed on this route");
    } else {
        examination.report.complain(
            needed, step, Trouble::NoEnvironment,
            "CreateEnvironmentBlock: " + tools::errorText(environmentError));
    }
    CloseHandle(token);
}

}  // namespace vok::doctor
