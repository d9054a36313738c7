#include "call_filter.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "system.h"

namespace vok::test {
namespace {

// Functions that nothing but the logging calls, or that prepare descriptors which show up as the
// arguments of other calls.
constexpr std::string_view always[] = {
    "GetLocalTime",   "CreateFileA",          "GetFileSize",
    "SetFilePointer", "CreateMutexA",         "WaitForSingleObject",
    "ReleaseMutex",   "RegCreateKeyExA",      "RegSetValueExA",
    "FreeSid",        "GetWindowsDirectoryA", "InitializeSecurityDescriptor",
    "IsWow64Process", "GetLengthSid",         "SetSecurityDescriptorDacl",
    "IsValidSid",     "InitializeAcl",        "AllocateAndInitializeSid",
    "GetAce",         "GetConfigData",        "AddAccessAllowedAce",
    "FormatMessageA",
};

// The support library opens its keys for all access, the work itself for reading.
constexpr std::string_view allAccess = "0xf0";

class Filter {
  public:
    explicit Filter(const System& system) : config_(system.modules.config.fileName) {}

    void take(const CallRecord& call) {
        if (call.name == "LoadLibraryA" && mentionsConfig(call)) {
            dropSetUp();
            remember(call);
            return;
        }
        if (!isLogging(call)) {
            kept_.push_back(&call);
        }
    }
    std::vector<const CallRecord*> kept() const { return kept_; }

  private:
    bool mentionsConfig(const CallRecord& call) const {
        return call.arguments.find(config_) != std::string::npos;
    }

    // What the per-call set-up asks for right before it loads the configuration library.
    void dropSetUp() {
        for (const std::string_view name : {"GetPrinterDriverDirectoryA", "GetModuleFileNameA"}) {
            if (!kept_.empty() && kept_.back()->name == name) {
                kept_.pop_back();
            }
        }
    }

    // The handle that the call gave, if it gave one.
    void remember(const CallRecord& call) {
        const size_t number = call.result.find('#');
        if (number != std::string::npos) {
            own_.insert(call.result.substr(call.result.find_last_of(' ', number) + 1));
        }
    }

    bool isLogging(const CallRecord& call) {
        if (std::find(std::begin(always), std::end(always), call.name) != std::end(always)) {
            if (call.name == "CreateMutexA") {
                remember(call);
            }
            return true;
        }
        const bool forOptions =
            call.name == "RegOpenKeyExA" && call.arguments.find(allAccess) != std::string::npos;
        const bool forVersion = call.arguments.find("kernel32") != std::string::npos &&
                                (call.name == "GetModuleHandleA" ||
                                 call.arguments.find("IsWow64Process") != std::string::npos);
        const std::string first = call.arguments.substr(0, call.arguments.find(','));
        return forOptions || forVersion || first.starts_with("file#") ||
               first.starts_with("options#") || first == "invalid" || own_.contains(first);
    }

    std::string config_;
    std::set<std::string> own_;  // handles of the logging's own
    std::vector<const CallRecord*> kept_;
};

}  // namespace

std::vector<const CallRecord*> callsOfTheWork(const System& system) {
    Filter filter(system);
    for (const CallRecord& call : system.calls.all()) {
        filter.take(call);
    }
    return filter.kept();
}

}  // namespace vok::test
