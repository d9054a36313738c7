#include "launch/program_launch.h"

#include <cstdint>
#include <string>

#include "launch/port_name.h"
#include "launch/system_library.h"
#include "launch/user_session.h"
#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/os_family.h"
#include "support/text.h"

namespace vok {

namespace {

using CreateEnvironmentBlockFn = BOOL(WINAPI*)(void**, HANDLE, BOOL);
using DestroyEnvironmentBlockFn = BOOL(WINAPI*)(void*);

constexpr DWORD tokenAccess = TOKEN_ASSIGN_PRIMARY | TOKEN_DUPLICATE | TOKEN_QUERY;

struct EnvironmentFunctions {
    CreateEnvironmentBlockFn create;
    DestroyEnvironmentBlockFn destroy;
};

EnvironmentFunctions findEnvironmentFunctions() {
    const HMODULE library = loadSystemLibrary("userenv.dll");
    const auto create =
        systemProcedure<CreateEnvironmentBlockFn>(library, "CreateEnvironmentBlock");
    const auto destroy =
        systemProcedure<DestroyEnvironmentBlockFn>(library, "DestroyEnvironmentBlock");
    return {create, destroy};
}

// The user's token and environment for one start.
class UserContext {
  public:
    explicit UserContext(const EnvironmentFunctions& functions) : functions_(functions) {}
    ~UserContext() {
        if (leftOpen_) {
            return;
        }
        if (environment != nullptr && functions_.destroy != nullptr) {
            functions_.destroy(environment);
        }
        if (threadToken != nullptr) {
            CloseHandle(threadToken);
        }
        // Also when there is none: the null handle is refused, and the call has always been made.
        CloseHandle(userToken);
    }
    UserContext(const UserContext&) = delete;
    UserContext& operator=(const UserContext&) = delete;

    // A start that ends early closes nothing.
    void leaveOpen() { leftOpen_ = true; }

    HANDLE userToken = nullptr;
    HANDLE threadToken = nullptr;
    void* environment = nullptr;

  private:
    EnvironmentFunctions functions_;
    bool leftOpen_ = false;
};

// Makes a primary token from the spooler's own. The thread is left impersonating.
void takeSpoolerToken(UserContext& context) {
    ImpersonateSelf(SecurityDelegation);
    OpenThreadToken(GetCurrentThread(), tokenAccess, FALSE, &context.threadToken);
    ImpersonateLoggedOnUser(context.threadToken);
    DuplicateTokenEx(context.threadToken, tokenAccess, nullptr, SecurityImpersonation, TokenPrimary,
                     &context.userToken);
}

PROCESS_INFORMATION createAsUser(const char* commandLine, const UserContext& context) {
    char desktop[] = "Winsta0\\Default";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.lpDesktop = desktop;
    PROCESS_INFORMATION process = {};
    std::string writableLine = toString(commandLine);
    logLine("Calling CPAU");
    if (CreateProcessAsUserA(
            context.userToken, nullptr, commandLine == nullptr ? nullptr : writableLine.data(),
            nullptr, nullptr, FALSE, 0, context.environment, nullptr, &startup, &process) == 0) {
        const DWORD error = GetLastError();
        logLine({"CPAU Failed lasterror=", toString(error, 10)});
    }
    return process;
}

void storeProcess(VKDATA* record, Companion companion, const PROCESS_INFORMATION& process) {
    if (companion == companionNemb) {
        record->hNEMBProc = process.hProcess;
        record->hNEMBThread = process.hThread;
    } else {
        record->hDRALProc = process.hProcess;
        record->hDRALThread = process.hThread;
    }
}

void logProcess(Companion companion, const PROCESS_INFORMATION& process) {
    const bool nemb = companion == companionNemb;
    logLine({nemb ? "VokData->hNEMBProc = " : "VokData->hDRALProc = ", toString(process.hProcess)});
    logLine({nemb ? "VokData->hNEMBThread  = " : "VokData->hDRALThread  = ",
             toString(process.hThread)});
}

}  // namespace

HANDLE LaunchProgram(const char* commandLine, const char* portName, VKDATA* record,
                     Companion companion) {
    traceCallQuietly("LaunchProgram");
    const EnvironmentFunctions environmentFunctions = findEnvironmentFunctions();
    if (commandLine != nullptr) {
        logLine({"The command line is ", toString(commandLine)});
    }
    const OsFamily family = GetOsFamily();
    const std::string localPort = StripComputerName(portName);

    UserContext context(environmentFunctions);
    std::uint32_t lastError = 0;
    bool haveUserEnvironment = false;
    if (hasSessions(family) && GetUserTokenWts(&context.userToken, &lastError) != 0) {
        if (environmentFunctions.create == nullptr ||
            environmentFunctions.create(&context.environment, context.userToken, FALSE) == 0) {
            context.leaveOpen();
            return nullptr;
        }
        haveUserEnvironment = true;
    }
    PROCESS_INFORMATION process = {};
    if (!IsUncPath(localPort) && !haveUserEnvironment && lastError != ERROR_PRIVILEGE_NOT_HELD) {
        logLine("Launching via WinExec");
        if (winExec(commandLine, SW_SHOWNORMAL)) {
            context.leaveOpen();
            return reinterpret_cast<HANDLE>(1);
        }
    } else {
        if (!haveUserEnvironment) {
            takeSpoolerToken(context);
        }
        process = createAsUser(commandLine, context);
        storeProcess(record, companion, process);
        logProcess(companion, process);
    }
    return process.hProcess;
}

std::uint32_t LaunchXFile(VKDATA* record, const char* applicationPath, const char* commandLine,
                          Companion companion) {
    traceCallQuietly("LaunchXFile");
    logLine(
        {"The App Name = ", toString(applicationPath), "The Cmd Line = ", toString(commandLine)});
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    std::string writableLine = toString(commandLine);
    if (CreateProcessA(applicationPath, commandLine == nullptr ? nullptr : writableLine.data(),
                       nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process) == 0) {
        const DWORD error = GetLastError();
        logLine({"CreateProcess Failed! The error = ", toString(error, 10)});
        return error;
    }
    if (record != nullptr) {
        storeProcess(record, companion, process);
    }
    return 0;
}

bool winExec(const char* commandLine, UINT showState) {
    constexpr UINT lastError = 31;
    return WinExec(commandLine, showState) > lastError;
}

}  // namespace vok
