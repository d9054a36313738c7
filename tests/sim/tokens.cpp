// Tokens and impersonation, and the functions on sessions and users that are looked up by name.
#include <span>
#include <string>
#include <string_view>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

HANDLE giveToken(Call& call, HANDLE* result) {
    *result = call.system().handles.open(Kind::token);
    return *result;
}

bool isToken(Call& call, HANDLE handle) {
    return handle && isSimulated(handle) && kindOf(handle) == Kind::token &&
           call.system().handles.isOpen(handle);
}

BOOL WINAPI impersonateSelf(SECURITY_IMPERSONATION_LEVEL level) {
    Call call("ImpersonateSelf", static_cast<int>(level));
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    call.system().sessions.impersonating[real.getCurrentThreadId()] = "self";
    return call.done(TRUE);
}

BOOL WINAPI impersonateLoggedOnUser(HANDLE token) {
    Call call("ImpersonateLoggedOnUser", token);
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (!isToken(call, token)) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    call.system().sessions.impersonating[real.getCurrentThreadId()] = handleName(token);
    return call.done(TRUE);
}

BOOL WINAPI revertToSelf() {
    Call call("RevertToSelf");
    call.system().sessions.impersonating.erase(real.getCurrentThreadId());
    return call.done(TRUE);
}

BOOL WINAPI openThreadToken(HANDLE thread, DWORD access, BOOL openAsSelf, PHANDLE token) {
    const std::string name = thread == ::GetCurrentThread() ? "current" : handleName(thread);
    Call call("OpenThreadToken", name, hex(access), openAsSelf, Out{token});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (!call.system().sessions.impersonating.contains(real.getCurrentThreadId())) {
        return call.done(FALSE, DWORD{ERROR_NO_TOKEN});
    }
    return call.done(TRUE, handleName(giveToken(call, token)));
}

BOOL WINAPI duplicateTokenEx(HANDLE existing, DWORD access, LPSECURITY_ATTRIBUTES security,
                             SECURITY_IMPERSONATION_LEVEL level, TOKEN_TYPE type, PHANDLE token) {
    Call call("DuplicateTokenEx", existing, hex(access),
              static_cast<const SECURITY_ATTRIBUTES*>(security), static_cast<int>(level),
              static_cast<int>(type), Out{token});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (!isToken(call, existing)) {
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    return call.done(TRUE, handleName(giveToken(call, token)));
}

DWORD WINAPI wtsGetActiveConsoleSessionId() {
    Call call("WTSGetActiveConsoleSessionId");
    return call.fails() ? call.failed<DWORD>() : call.done(call.system().sessions.console);
}

BOOL WINAPI processIdToSessionId(DWORD process, DWORD* session) {
    Call call("ProcessIdToSessionId", hex(process), Out{session});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    *session = call.system().sessions.own;
    return call.done(TRUE, describe(*session));
}

BOOL WINAPI wtsQueryUserToken(ULONG session, PHANDLE token) {
    Call call("WTSQueryUserToken", session, Out{token});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (const DWORD error = call.system().sessions.userTokenError) {
        return call.done(FALSE, error);
    }
    return call.done(TRUE, handleName(giveToken(call, token)));
}

BOOL WINAPI createEnvironmentBlock(LPVOID* block, HANDLE token, BOOL inherit) {
    Call call("CreateEnvironmentBlock", Out{block}, token, inherit);
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (const DWORD error = call.system().sessions.environmentError) {
        return call.done(FALSE, error);
    }
    *block = call.system().handles.open(Kind::environment);
    return call.done(TRUE, handleName(*block));
}

BOOL WINAPI destroyEnvironmentBlock(LPVOID block) {
    Call call("DestroyEnvironmentBlock", static_cast<const void*>(block));
    const bool closed = call.system().closeHandle(call, block, Kind::environment);
    return call.fails() ? call.failed<BOOL>()
           : closed     ? call.done(TRUE)
                        : call.done(FALSE, DWORD{ERROR_INVALID_PARAMETER});
}

BOOL WINAPI isWow64Process(HANDLE process, PBOOL isWow64) {
    const std::string name = process == ::GetCurrentProcess() ? "current" : handleName(process);
    Call call("IsWow64Process", name, Out{isWow64});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    *isWow64 = FALSE;
    return call.done(call.system().sessions.wow64Result);
}

}  // namespace

std::span<const Substitute> tokenSubstitutes() {
    static const Substitute all[] = {
        substitute("ImpersonateSelf", impersonateSelf),
        substitute("ImpersonateLoggedOnUser", impersonateLoggedOnUser),
        substitute("RevertToSelf", revertToSelf),
        substitute("OpenThreadToken", openThreadToken),
        substitute("DuplicateTokenEx", duplicateTokenEx),
    };
    return all;
}

void* lookedUpFunction(std::string_view name) {
    static const Substitute all[] = {
        substitute("WTSGetActiveConsoleSessionId", wtsGetActiveConsoleSessionId),
        substitute("ProcessIdToSessionId", processIdToSessionId),
        substitute("IsWow64Process", isWow64Process),
        substitute("WTSQueryUserToken", wtsQueryUserToken),
        substitute("CreateEnvironmentBlock", createEnvironmentBlock),
        substitute("DestroyEnvironmentBlock", destroyEnvironmentBlock),
    };
    for (const Substitute& one : all) {
        if (one.name == name) {
            return one.function;
        }
    }
    return nullptr;
}

}  // namespace vok::test
