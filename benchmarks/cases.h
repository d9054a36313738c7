// What is measured and compared: every call that a print processor makes, by every route.
#pragma once
#include <vok/companion.h>

#include <ostream>
#include <string>
#include <vector>

namespace vok::bench {

enum class Route { message, pipe, nineX };
enum class Logging { off, on, full };
const char* nameOf(Route route);
const char* nameOf(Logging logging);

// The exports of a loaded module: the library's, or the floor's.
struct Exports {
    VOKLaunchXFilesFn launch;
    VOKSendMsgFn sendDral;
    VOKSendMsgFn sendNemb;
    VOKSendMsgExFn sendMsgEx;
    VOKGetFn getDral;
    VOKGetFn getNemb;
};
// Throws std::runtime_error when one is missing.
Exports exportsOf(HMODULE module);

struct Case {
    enum class Kind { launch, dral, nemb, generic, getDral, getNemb };
    const char* name;
    Route route;
    Kind kind;
    DWORD messageId;

    std::string title() const { return std::string(nameOf(route)) + " " + name; }
    bool isGetter() const { return kind == Kind::getDral || kind == Kind::getNemb; }
};
inline std::ostream& operator<<(std::ostream& out, const Case& one) {
    return out << one.title();
}
const std::vector<Case>& cases();
// DRAL's start of a page by message: an event as most are.
const Case& medianEvent();

// The printer whose companions run, and what else the calls of a case are given.
struct Job {
    std::string printer = "Office";
    HANDLE dral = nullptr;  // how the companions are reached
    HANDLE nemb = nullptr;
    std::string dralSuffix;
};

// The job record as it is right before the call of that case.
VKDATA recordFor(const Case& one, const Job& job);
// Makes the call. The result is the export's own.
LONG_PTR perform(const Case& one, const Exports& exports, const Job& job, VKDATA& record);

// The names and values of the logger's options.
struct OptionValue {
    const char* name;
    DWORD value;
};
std::vector<OptionValue> optionsFor(Logging logging);

}  // namespace vok::bench
