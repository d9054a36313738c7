// Sessions, the route that follows from them, and the user's token.

#include <windows.h>

#include <fmt/format.h>
#include <winsvc.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "common/other_session.h"
#include "common/system.h"
#include "examination.h"
#include "launch/system_library.h"
#include "launch/user_session.h"

namespace vok::doctor {

namespace {

constexpr DWORD noSession = 0xFFFFFFFF;

// Process id of the spooler's service; 0 when it does not run or the system does not tell. What
// can't be opened is refused by the call that would need it.
DWORD spoolerProcess() {
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceA(manager, "Spooler", SERVICE_QUERY_STATUS);
    SERVICE_STATUS_PROCESS status = {};
    DWORD needed = 0;
    QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                         sizeof status, &needed);
    CloseServiceHandle(service);
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
        origin = fmt::format("service, process {}", process);
        return session;
    }
    origin = "taken to be this one: its service is not seen to run";
    return ownSession;
}

// What the library does with a token before it starts anything. False leaves the last error.
bool environmentCanBeMade(HANDLE token) {
    const HMODULE library = loadSystemLibrary("userenv.dll");
    const auto create =
        systemProcedure<BOOL(WINAPI*)(void**, HANDLE, BOOL)>(library, "CreateEnvironmentBlock");
    const auto destroy = systemProcedure<BOOL(WINAPI*)(void*)>(library, "DestroyEnvironmentBlock");
    void* environment = nullptr;
    if (create == nullptr || create(&environment, token, FALSE) == 0) {
        return false;
    }
    if (destroy != nullptr) {
        destroy(environment);
    }
    return true;
}

}  // namespace

void examineSessions(Examination& examination) {
    const Step step = examination.step("sessions");
    const Step route = examination.step("route");
    if (!hasSessions(examination.family)) {
        step.ok("this system has none");
        route.ok("window messages");
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
    const std::string text = fmt::format("console {}, spooler {} ({}), you {}",
                                         static_cast<std::int32_t>(console), seen, origin, own);
    if (console == noSession) {
        step.problem("no-console", "{}", text);
    } else if (own != console && own != 0) {
        // A service, in session 0, has no user before it who could be in the wrong place.
        step.problem("wrong-session", "{}", text);
    } else {
        step.ok("{}", text);
    }
    examination.spoolerApart = spoolerIsApart();
    route.ok("{} in the console's session", examination.spoolerApart
                                                ? "pipes: the spooler is not"
                                                : "window messages: the spooler is");
}

void examineUserToken(Examination& examination) {
    const Step step = examination.step("user token");
    if (!hasSessions(examination.family)) {
        step.ok("not asked for on this system");
        return;
    }
    const bool needed = examination.spoolerApart ||
                        std::ranges::any_of(examination.printers, &Printer::hasNetworkPort);
    HANDLE token = nullptr;
    std::uint32_t error = 0;
    if (GetUserTokenWts(&token, &error) == 0) {
        const bool forbidden = error == ERROR_PRIVILEGE_NOT_HELD;
        step.complain(needed && !forbidden,
                      forbidden ? Trouble("token-privilege") : Trouble("no-user-token"),
                      "WTSQueryUserToken: {}{}", tools::errorText(error),
                      needed ? "" : "; not needed on this route");
        return;
    }
    if (!environmentCanBeMade(token)) {
        step.complain(needed, "no-environment", "CreateEnvironmentBlock: {}",
                      tools::errorText(GetLastError()));
    } else {
        step.ok("to be had, {}",
                needed ? "with its environment" : "though not needed on this route");
    }
    CloseHandle(token);
}

}  // namespace vok::doctor
