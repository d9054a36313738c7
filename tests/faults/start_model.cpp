// The start of a program in the user's session.
#include <string>
#include <string_view>

#include "faults/model.h"

namespace vok::test {

bool Model::load(const char* library) {
    return succeeded(trace_.take("LoadLibraryA", library));
}

bool Model::lookUp(const char* function) {
    return noteIn(trace_.take("GetProcAddress", function)) == "found";
}

// What follows the computer's name, which is empty when it cannot be read.
std::string Model::localPort() {
    if (!trace_.take("RegOpenKeyExA", "ActiveComputerName").starts_with("0")) {
        return port_;
    }
    if (!trace_.take("RegQueryValueExA", "\"ComputerName\"").starts_with("0")) {
        return port_;
    }
    constexpr std::string_view computer = "HOST";
    const size_t found = port_.find(computer);
    return found == std::string::npos ? port_ : port_.substr(found + computer.size());
}

bool Model::userToken(bool& forbidden) {
    const bool terminalServices = load("wtsapi32.dll");
    const bool kernel = load("kernel32.dll");
    const bool query = terminalServices && lookUp("WTSQueryUserToken");
    std::string session = "0";
    if (kernel && lookUp("WTSGetActiveConsoleSessionId")) {
        session = trace_.take("WTSGetActiveConsoleSessionId");
    }
    if (!query) {
        return false;
    }
    const std::string result = trace_.take("WTSQueryUserToken", session + ", out");
    forbidden = hasError(result, ERROR_PRIVILEGE_NOT_HELD);
    return succeeded(result);
}

// All ports of the scenarios that begin with two backslashes are network ports.
HANDLE Model::launchProgram(bool dral) {
    const bool environments = load("userenv.dll");
    const bool creates = environments && lookUp("CreateEnvironmentBlock");
    const bool destroys = environments && lookUp("DestroyEnvironmentBlock");
    const Family family = this->family();
    const bool network = localPort().starts_with("\\\\");
    bool forbidden = false;
    bool hasEnvironment = false;
    if (family == Family::withSessions && userToken(forbidden)) {
        if (!creates || !succeeded(trace_.take("CreateEnvironmentBlock"))) {
            return nullptr;
        }
        hasEnvironment = true;
    }
    if (!network && !hasEnvironment && !forbidden) {
        constexpr LONG_PTR lastStartError = 31;
        const bool started = numberIn(trace_.take("WinExec", "\", 1")) > lastStartError;
        return reinterpret_cast<HANDLE>(started ? 1 : 0);
    }
    if (!hasEnvironment) {
        trace_.take("ImpersonateSelf", "3");
        trace_.take("OpenThreadToken", "current, 0xb, 0");
        trace_.take("ImpersonateLoggedOnUser");
        trace_.take("DuplicateTokenEx", "0xb, null, 2, 1");
    }
    const HANDLE process = createAsUser(dral);
    if (hasEnvironment && destroys) {
        trace_.take("DestroyEnvironmentBlock");
    }
    return process;
}

HANDLE Model::createAsUser(bool dral) {
    const std::string line =
        dral ? "DRAL.EXE SPLPP /F=Office\"" : "NEMB.EXE SPLPP /F=Office /J=1\"";
    store(dral, trace_.take("CreateProcessAsUserA", line));
    return dral ? record_.hDRALProc : record_.hNEMBProc;
}

// Both handles, null after a failure.
void Model::store(bool dral, const std::string& result) {
    const std::string note = noteIn(result);
    const size_t comma = note.find(", ");
    const HANDLE process = handleIn(note);
    const HANDLE thread = process ? handleIn(note.substr(comma + 2)) : nullptr;
    (dral ? record_.hDRALProc : record_.hNEMBProc) = process;
    (dral ? record_.hDRALThread : record_.hNEMBThread) = thread;
}

}  // namespace vok::test
