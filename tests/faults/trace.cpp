#include "faults/trace.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

namespace vok::test {
namespace {

// Those that decide wherever they are called.
constexpr std::string_view deciding[] = {"ClosePrinter",
                                         "ConnectNamedPipe",
                                         "CreateEnvironmentBlock",
                                         "CreateNamedPipeA",
                                         "CreateProcessA",
                                         "CreateProcessAsUserA",
                                         "DuplicateTokenEx",
                                         "DestroyEnvironmentBlock",
                                         "DisconnectNamedPipe",
                                         "FindWindowA",
                                         "GetPrinterDataA",
                                         "GetPrinterDriverDirectoryA",
                                         "GetVersionExA",
                                         "ImpersonateLoggedOnUser",
                                         "ImpersonateSelf",
                                         "OpenMutexA",
                                         "OpenPrinterA",
                                         "OpenThreadToken",
                                         "PostMessageA",
                                         "ProcessIdToSessionId",
                                         "ReadFile",
                                         "RegOpenKeyA",
                                         "SendMessageA",
                                         "Sleep",
                                         "WTSQueryUserToken",
                                         "WTSGetActiveConsoleSessionId",
                                         "WaitForInputIdle",
                                         "WinExec"};

bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// Those that the logging calls as well, or the runtime.
bool decidesByArguments(const CallRecord& call) {
    const std::string& arguments = call.arguments;
    if (call.name == "WriteFile") {
        return !arguments.starts_with("file#");
    }
    if (call.name == "CloseHandle") {
        return arguments.starts_with("pipe#");
    }
    if (call.name == "LoadLibraryA") {
        return !contains(arguments, "cfg.dll");
    }
    if (call.name == "GetProcAddress") {
        return !contains(arguments, "IsWow64Process") && !contains(arguments, "GetConfigData");
    }
    if (call.name == "RegOpenKeyExA") {
        return contains(arguments, "ActiveComputerName");
    }
    return call.name == "RegQueryValueExA" &&
           (contains(arguments, "\"ComputerName\"") || contains(arguments, "\"Printer Prefix\""));
}

}  // namespace

bool decides(const CallRecord& call) {
    return std::find(std::begin(deciding), std::end(deciding), call.name) != std::end(deciding) ||
           decidesByArguments(call);
}

Trace::Trace(const System& system) {
    for (const CallRecord& call : system.calls.all()) {
        if (decides(call)) {
            calls_.push_back(&call);
        }
    }
}

bool Trace::nextIs(std::string_view name) const {
    return broken_.empty() && next_ < calls_.size() && calls_[next_]->name == name;
}

std::string Trace::take(std::string_view name, const std::string& part) {
    if (!broken_.empty()) {
        return "0";
    }
    if (!nextIs(name) || !contains(calls_[next_]->arguments, part)) {
        broken_ = "due was " + std::string(name) + "(… " + part + " …), but it was " +
                  (next_ < calls_.size() ? calls_[next_]->line() : "the end");
        return "0";
    }
    return calls_[next_++]->result;
}

std::string Trace::problem() const {
    if (broken_.empty() && next_ < calls_.size()) {
        return "a call that was not due: " + calls_[next_]->line();
    }
    return broken_;
}

bool succeeded(const std::string& result) {
    return !result.starts_with("0") && !result.starts_with("null");
}

LONG_PTR numberIn(const std::string& result) {
    return static_cast<LONG_PTR>(std::strtoll(result.c_str(), nullptr, 10));
}

HANDLE handleIn(const std::string& text) {
    if (text.starts_with("invalid")) {
        return INVALID_HANDLE_VALUE;
    }
    for (auto kind = static_cast<uint8_t>(Kind::file);
         kind <= static_cast<uint8_t>(Kind::environment); ++kind) {
        const std::string prefix = std::string(kindName(static_cast<Kind>(kind))) + "#";
        if (text.starts_with(prefix)) {
            const auto number = std::strtoul(text.c_str() + prefix.size(), nullptr, 10);
            return handleOf(static_cast<Kind>(kind), static_cast<uint32_t>(number));
        }
    }
    return nullptr;
}

std::string noteIn(const std::string& result) {
    constexpr std::string_view arrow = "-> ";
    const size_t begin = result.find(arrow);
    return begin == std::string::npos ? "" : result.substr(begin + arrow.size());
}

bool hasError(const std::string& result, DWORD error) {
    return contains(result, "(error " + std::to_string(error) + ")");
}

}  // namespace vok::test
