#include "launch/user_session.h"

#include <cstdint>
#include <string>

#include "launch/system_library.h"
#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/os_family.h"
#include "support/text.h"

namespace vok {

namespace {

using ActiveConsoleSessionIdFn = DWORD(WINAPI*)();
using ProcessIdToSessionIdFn = BOOL(WINAPI*)(DWORD, DWORD*);
using QueryUserTokenFn = BOOL(WINAPI*)(ULONG, HANDLE*);

constexpr const char* activeConsoleSessionId = "WTSGetActiveConsoleSessionId";
constexpr const char* queryUserToken = "WTSQueryUserToken";

struct SessionLibraries {
    HMODULE terminalServices = loadSystemLibrary("wtsapi32.dll");
    HMODULE kernel = loadSystemLibrary("kernel32.dll");
};

std::string lowWordInHex(HANDLE handle) {
    const auto low = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
    return toString(static_cast<unsigned long>(low), 16);
}

}  // namespace

BOOL GetUserTokenWts(HANDLE* token, std::uint32_t* lastError) {
    if (token == nullptr) {
        return 0;
    }
    const SessionLibraries libraries;
    const auto query =
        systemProcedure<QueryUserTokenFn>(libraries.terminalServices, queryUserToken);
    const auto consoleSession =
        systemProcedure<ActiveConsoleSessionIdFn>(libraries.kernel, activeConsoleSessionId);
    const DWORD session = consoleSession == nullptr ? 0 : consoleSession();
    const BOOL rc = query == nullptr ? 0 : query(session, token);
    const DWORD error = GetLastError();
    *lastError = error;
    logLine({"WTSQueryUserToken rc=", toString(static_cast<long>(rc), 10),
             " lastError=", toString(error, 10), " token handle=", lowWordInHex(*token)});
    return rc;
}

std::uint32_t FindOutSessionInfo(std::uint32_t* consoleSession, std::uint32_t* processSession) {
    traceCallQuietly("FindOutSessionInfo");
    const SessionLibraries libraries;
    // Not used here: the look-up is one of the calls that this function has always made.
    systemProcedure<QueryUserTokenFn>(libraries.terminalServices, queryUserToken);
    const auto consoleSessionId =
        systemProcedure<ActiveConsoleSessionIdFn>(libraries.kernel, activeConsoleSessionId);
    if (consoleSessionId != nullptr) {
        *consoleSession = consoleSessionId();
    }
    const auto sessionOfProcess =
        systemProcedure<ProcessIdToSessionIdFn>(libraries.kernel, "ProcessIdToSessionId");
    DWORD session = 0;
    if (sessionOfProcess != nullptr) {
        sessionOfProcess(GetCurrentProcessId(), &session);
    }
    *processSession = session;
    return 0;
}

bool spoolerIsApart() {
    if (!hasSessions(GetOsFamily())) {
        return false;
    }
    std::uint32_t consoleSession = 0;
    std::uint32_t spoolerSession = 0;
    FindOutSessionInfo(&consoleSession, &spoolerSession);
    return consoleSession != spoolerSession;
}

}  // namespace vok
