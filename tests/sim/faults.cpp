#include "faults.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vok::test {
namespace {

using Table = std::unordered_map<std::string_view, std::vector<Failure>>;

constexpr LONG_PTR invalid = -1;

// Results and last errors as the system gives them: "no such file" 2, "no such path" 3, "too many
// open files" 4, "denied" 5, "bad handle" 6, "no memory" 8, "sharing" 32, "bad parameter" 87, …
void addKernel(Table& table) {
    table["GetVersionExA"] = {{FALSE, ERROR_INSUFFICIENT_BUFFER}};
    table["GetModuleFileNameA"] = {{0, ERROR_MOD_NOT_FOUND}};
    table["GetModuleHandleA"] = {{0, ERROR_MOD_NOT_FOUND}};
    table["GetProcAddress"] = {{0, ERROR_PROC_NOT_FOUND}};
    table["LoadLibraryA"] = {{0, ERROR_MOD_NOT_FOUND}, {0, ERROR_NOT_ENOUGH_MEMORY}};
    table["FreeLibrary"] = {{FALSE, ERROR_INVALID_HANDLE}, {FALSE, ERROR_MOD_NOT_FOUND}};
    table["GetSystemDirectoryA"] = {{0, ERROR_NOT_ENOUGH_MEMORY}};
    table["GetWindowsDirectoryA"] = {{0, ERROR_NOT_ENOUGH_MEMORY}, {1000, 0}};
    table["FormatMessageA"] = {{0, ERROR_MR_MID_NOT_FOUND}, {0, ERROR_NOT_ENOUGH_MEMORY}};
    table["CloseHandle"] = {{FALSE, ERROR_INVALID_HANDLE}};
    table["CreateMutexA"] = {{0, ERROR_ACCESS_DENIED}, {0, ERROR_FILENAME_EXCED_RANGE}};
    table["OpenMutexA"] = {{0, ERROR_FILE_NOT_FOUND}, {0, ERROR_ACCESS_DENIED}};
    table["ReleaseMutex"] = {{FALSE, ERROR_NOT_OWNER}};
    table["WaitForSingleObject"] = {{static_cast<LONG_PTR>(WAIT_FAILED), ERROR_INVALID_HANDLE},
                                    {WAIT_TIMEOUT, 0},
                                    {WAIT_ABANDONED, 0}};
    table["WinExec"] = {{2, ERROR_FILE_NOT_FOUND}, {0, ERROR_NOT_ENOUGH_MEMORY}, {31, 0}};
    table["CreateProcessA"] = {{FALSE, ERROR_FILE_NOT_FOUND}, {FALSE, ERROR_ACCESS_DENIED}};
}

void addFilesAndPipes(Table& table) {
    table["CreateFileA"] = {{invalid, ERROR_FILE_NOT_FOUND},
                            {invalid, ERROR_ACCESS_DENIED},
                            {invalid, ERROR_SHARING_VIOLATION}};
    table["GetFileSize"] = {{invalid, ERROR_INVALID_HANDLE}};
    table["SetFilePointer"] = {{invalid, ERROR_NEGATIVE_SEEK}};
    table["WriteFile"] = {{FALSE, ERROR_DISK_FULL}, {TRUE, 0, 1}, {FALSE, ERROR_NO_DATA}};
    table["ReadFile"] = {{FALSE, ERROR_BROKEN_PIPE}, {TRUE, 0, 0}, {TRUE, 0, 3}};
    table["DeleteFileA"] = {{FALSE, ERROR_FILE_NOT_FOUND}, {FALSE, ERROR_SHARING_VIOLATION}};
    table["CreateNamedPipeA"] = {{invalid, ERROR_PIPE_BUSY}, {invalid, ERROR_ACCESS_DENIED}};
    table["ConnectNamedPipe"] = {{FALSE, ERROR_NO_DATA}, {FALSE, ERROR_INVALID_HANDLE}};
    table["DisconnectNamedPipe"] = {{FALSE, ERROR_PIPE_NOT_CONNECTED}};
}

void addRegistry(Table& table) {
    table["RegOpenKeyA"] = {{ERROR_FILE_NOT_FOUND}, {ERROR_ACCESS_DENIED}};
    table["RegOpenKeyExA"] = {{ERROR_FILE_NOT_FOUND}, {ERROR_ACCESS_DENIED}};
    table["RegCreateKeyExA"] = {{ERROR_ACCESS_DENIED}, {ERROR_KEY_DELETED}};
    table["RegQueryValueExA"] = {{ERROR_FILE_NOT_FOUND}, {ERROR_ACCESS_DENIED}, {ERROR_MORE_DATA}};
    table["RegSetValueExA"] = {{ERROR_ACCESS_DENIED}, {ERROR_KEY_DELETED}};
    table["RegCloseKey"] = {{ERROR_INVALID_HANDLE}};
}

void addSecurity(Table& table) {
    const std::vector<Failure> memory = {{FALSE, ERROR_NOT_ENOUGH_MEMORY}};
    const std::vector<Failure> parameter = {{FALSE, ERROR_INVALID_PARAMETER}};
    table["InitializeSecurityDescriptor"] = {{FALSE, ERROR_CALL_NOT_IMPLEMENTED}};
    table["SetSecurityDescriptorDacl"] = {{FALSE, ERROR_INVALID_SECURITY_DESCR}};
    table["GetSecurityDescriptorDacl"] = {{FALSE, ERROR_INVALID_SECURITY_DESCR}};
    table["AllocateAndInitializeSid"] = memory;
    table["IsValidSid"] = {{FALSE, ERROR_INVALID_SID}};
    table["InitializeAcl"] = parameter;
    table["AddAccessAllowedAce"] = {{FALSE, ERROR_ALLOTTED_SPACE_EXCEEDED}};
    table["GetAce"] = parameter;
    table["SetKernelObjectSecurity"] = {{FALSE, ERROR_ACCESS_DENIED}};
    table["SetSecurityInfo"] = {{ERROR_ACCESS_DENIED}};
    table["ImpersonateSelf"] = {{FALSE, ERROR_NO_IMPERSONATION_TOKEN}};
    table["ImpersonateLoggedOnUser"] = {{FALSE, ERROR_INVALID_HANDLE}};
    table["OpenThreadToken"] = {{FALSE, ERROR_NO_TOKEN}, {FALSE, ERROR_ACCESS_DENIED}};
    table["DuplicateTokenEx"] = {{FALSE, ERROR_INVALID_HANDLE}, {FALSE, ERROR_ACCESS_DENIED}};
    table["CreateProcessAsUserA"] = {{FALSE, ERROR_PRIVILEGE_NOT_HELD},
                                     {FALSE, ERROR_FILE_NOT_FOUND}};
}

void addRest(Table& table) {
    table["FindWindowA"] = {{0, ERROR_FILE_NOT_FOUND}};
    table["SendMessageA"] = {{0, ERROR_INVALID_WINDOW_HANDLE}};
    table["PostMessageA"] = {{FALSE, ERROR_INVALID_WINDOW_HANDLE}};
    table["WaitForInputIdle"] = {{WAIT_TIMEOUT, 0},
                                 {static_cast<LONG_PTR>(WAIT_FAILED), ERROR_INVALID_HANDLE}};
    table["OpenPrinterA"] = {{FALSE, ERROR_INVALID_PRINTER_NAME},
                             {FALSE, RPC_S_SERVER_UNAVAILABLE}};
    table["ClosePrinter"] = {{FALSE, ERROR_INVALID_HANDLE}};
    table["GetPrinterDataA"] = {{ERROR_FILE_NOT_FOUND}, {ERROR_MORE_DATA}, {ERROR_INVALID_HANDLE}};
    table["GetPrinterDriverDirectoryA"] = {{FALSE, ERROR_INSUFFICIENT_BUFFER},
                                           {FALSE, RPC_S_SERVER_UNAVAILABLE}};
    table["IsWow64Process"] = {{FALSE, ERROR_INVALID_HANDLE}};
    table["ProcessIdToSessionId"] = {{FALSE, ERROR_ACCESS_DENIED}};
    table["WTSGetActiveConsoleSessionId"] = {{static_cast<LONG_PTR>(0xFFFFFFFF), 0}};
    table["WTSQueryUserToken"] = {{FALSE, ERROR_PRIVILEGE_NOT_HELD}, {FALSE, ERROR_NO_TOKEN}};
    table["CreateEnvironmentBlock"] = {{FALSE, ERROR_ACCESS_DENIED}};
    table["DestroyEnvironmentBlock"] = {{FALSE, ERROR_INVALID_PARAMETER}};
    table["GetConfigData"] = {{0}, {2}};
}

const Table& failures() {
    static const Table table = [] {
        Table made;
        addKernel(made);
        addFilesAndPipes(made);
        addRegistry(made);
        addSecurity(made);
        addRest(made);
        return made;
    }();
    return table;
}

}  // namespace

const std::vector<Failure>& failuresOf(std::string_view function) {
    static const std::vector<Failure> none;
    const auto it = failures().find(function);
    return it == failures().end() ? none : it->second;
}

std::vector<std::string_view> failingFunctions() {
    std::vector<std::string_view> names;
    for (const auto& [name, ways] : failures()) {
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void Faults::failCall(size_t k, size_t way, Lasting lasting) {
    armed_.push_back({"", k, lasting, way, std::nullopt});
}

void Faults::fail(std::string_view function, size_t way, size_t n, Lasting lasting) {
    armed_.push_back({std::string(function), n, lasting, way, std::nullopt});
}

void Faults::fail(std::string_view function, Failure failure, size_t n, Lasting lasting) {
    armed_.push_back({std::string(function), n, lasting, 0, failure});
}

void Faults::clear() {
    armed_.clear();
    fired_ = 0;
    failableCalls_ = 0;
}

bool Faults::due(Armed& armed, std::string_view function) {
    if (!armed.function.empty() && armed.function != function) {
        return false;
    }
    if (armed.remaining > 1) {
        --armed.remaining;
        return false;
    }
    if (armed.remaining == 0) {
        return false;  // has fired and was for once
    }
    armed.remaining = armed.lasting == Lasting::once ? 0 : 1;
    return true;
}

std::optional<Failure> Faults::next(std::string_view function) {
    const std::vector<Failure>& ways = failuresOf(function);
    if (!ways.empty()) {
        ++failableCalls_;
    }
    std::optional<Failure> chosen;
    for (Armed& armed : armed_) {
        if ((ways.empty() && !armed.own) || !due(armed, function) || chosen) {
            continue;
        }
        chosen = armed.own ? armed.own : ways[std::min(armed.way, ways.size() - 1)];
        ++fired_;
    }
    return chosen;
}

}  // namespace vok::test
