// A line of the log stands right before or right after the call that it is about: whoever reads the
// last line of a log knows in what the job hangs.
#include <gtest/gtest.h>

#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "faults/known_texts.h"
#include "faults/scenario.h"
#include "faults/trace.h"

namespace vok::test {
namespace {

enum class Stands { before, after };

struct Rule {
    std::string_view line;
    Stands stands;
    std::string_view call;
};

constexpr Rule rules[] = {
    {"SM_OPENJOB. ???? HWND = *", Stands::before, "SendMessageA"},
    {"SM_CLOSEJOB. ???? HWND = *", Stands::before, "SendMessageA"},
    {"SM_CANCELJOB. ???? HWND = *", Stands::before, "SendMessageA"},
    {"SM_STARTPAGE/ENDPAGE. Nemb HWND = *", Stands::after, "SendMessageA"},
    {"*SendMessage rc = *", Stands::after, "SendMessageA"},
    {"Inside * JOB loop", Stands::before, "SendMessageA"},
    {"Waiting for *", Stands::before, "WaitForInputIdle"},
    {"Finished waiting*", Stands::after, "WaitForInputIdle"},
    {"*Sleep 1000*", Stands::before, "Sleep"},
    {"*SendMessage equals WAITPRINT*", Stands::after, "SendMessageA"},
    {"Reset DRAL handle*", Stands::after, "SendMessageA"},
    {"SM_OPENJOB. ???? HPIPE = *", Stands::before, "ConnectNamedPipe"},
    {"SM_CLOSEJOB. Dral HPIPE = *", Stands::before, "ConnectNamedPipe"},
    {"SM_CANCELJOB. Dral HPIPE = *", Stands::before, "ConnectNamedPipe"},
    {"SM_STARTPAGE. Dral HPIPE = *", Stands::before, "WriteFile"},
    {"SM_CANCELJOB. Nemb HPIPE = *", Stands::before, "WriteFile"},
    {"SM_STARTPAGE/ENDPAGE. Nemb HPIPE = *", Stands::after, "ReadFile"},
    {"*Write????Pipe* rc = *", Stands::after, "ReadFile"},
    {"We did not get WAITPRINT*", Stands::before, "DisconnectNamedPipe"},
    {"OPENJOB flag was NOT set in epDoc", Stands::before, "DisconnectNamedPipe"},
    {"OPENJOB flag was NOT set in epDoc. Close PIPE*", Stands::before, "DisconnectNamedPipe"},
    {"Close PIPE*", Stands::after, "CloseHandle"},
    {"Calling CPAU", Stands::before, "CreateProcessAsUserA"},
    {"VokData->h*", Stands::after, "CreateProcessAsUserA"},
    {"Launching via WinExec", Stands::before, "WinExec"},
    {"WTSQueryUserToken rc=*", Stands::after, "WTSQueryUserToken"},
    {"The App Name = *", Stands::before, "CreateProcessA"},
    {"Trying to open mutex :*", Stands::before, "OpenMutexA"},
    {"Nemb is already running", Stands::after, "OpenMutexA"},
    {"Error Openining Mutex rc=*", Stands::after, "OpenMutexA"},
    {"Nemb HPIPE from CreateNamedPipe = *", Stands::after, "CreateNamedPipeA"},
    {"Nemb HPIPE from CreateNamedPipe = *", Stands::before, "ClosePrinter"},
    {"Return from Start*", Stands::after, "ClosePrinter"},
    {"Using * in Start*", Stands::before, "OpenPrinterA"},
    {"???? title - *", Stands::before, "FindWindowA"},
    {"Searching Dral Title = *", Stands::after, "OpenPrinterA"},
    {"Searching Dral Title = *", Stands::before, "FindWindowA"},
    {"Null Window Handle in SendDralMsgXP", Stands::before, "FindWindowA"},
    {"Null Window Handle in SendNembMsg", Stands::before, "OpenPrinterA"},
    {"FindXWindow className = *", Stands::before, "FindWindowA"},
    {"FindXWindow = *", Stands::after, "FindWindowA"},
    {"hDRAL = *", Stands::after, "FindWindowA"},
    {"hNEMB =  *", Stands::after, "FindWindowA"},
    {"WinExec rc = 0*", Stands::after, "FindWindowA"},
    {"Dral Launched in User context*", Stands::after, "FindWindowA"},
    {"The DRAL is already running", Stands::after, "FindWindowA"},
    {"dral path - *", Stands::before, "LoadLibraryA"},
    {"nemb path - *", Stands::before, "LoadLibraryA"},
    {"dral PATH - *", Stands::before, "RegOpenKeyExA"},
    {"P2P Port. *", Stands::after, "RegQueryValueExA"},
    {"The command line is *", Stands::after, "GetProcAddress"},
};

// One entry of the merged course of lines and deciding calls.
struct Event {
    std::string line;  // empty: a call
    std::string call;
};

std::optional<std::string> lineOf(const CallRecord& record) {
    if (record.name != "WriteFile" || !record.arguments.starts_with("file#")) {
        return std::nullopt;
    }
    constexpr std::string_view category = "VOK        ";
    const size_t begin = record.arguments.find('"') + 1;
    const size_t end = record.arguments.rfind('"');
    return withoutClock(record.arguments.substr(begin, end - begin)).substr(category.size());
}

std::vector<Event> courseOf(const System& system) {
    std::vector<Event> course;
    for (const CallRecord& record : system.calls.all()) {
        if (const auto line = lineOf(record)) {
            course.push_back({*line, ""});
        } else if (decides(record)) {
            course.push_back({"", record.name});
        }
    }
    return course;
}

// The deciding call next to an entry; empty when there is none.
template <class Iterator>
std::string nearestCall(Iterator from, Iterator end) {
    for (; from != end; ++from) {
        if (from->line.empty()) {
            return from->call;
        }
    }
    return "";
}

// Both neighbours of a line, as far as rules are about them; counts the rules that were of use.
void checkLine(const std::vector<Event>& course, size_t at, std::vector<size_t>& used) {
    for (size_t i = 0; i < std::size(rules); ++i) {
        if (!matches(course[at].line, rules[i].line)) {
            continue;
        }
        ++used[i];
        const auto line = course.begin() + static_cast<std::ptrdiff_t>(at);
        const std::string call = rules[i].stands == Stands::before
                                     ? nearestCall(line + 1, course.end())
                                     : nearestCall(std::make_reverse_iterator(line), course.rend());
        EXPECT_EQ(call, rules[i].call) << course[at].line;
    }
}

void checkScenario(const Scenario& scenario, std::vector<size_t>& used) {
    SCOPED_TRACE(scenario.name);
    Job job("Office", scenario.port);
    System system(scenario.os);
    prepareMachine(system, scenario);
    scenario.prepare(system, job.record());
    const Started library;
    system.calls.clear();
    for (const Step& step : scenario.steps) {
        perform(*library, step, job);
    }
    const std::vector<Event> course = courseOf(system);
    for (size_t at = 0; at < course.size(); ++at) {
        if (!course[at].line.empty()) {
            checkLine(course, at, used);
        }
    }
}

TEST(LogOrder, EveryLineStandsWhereItsCallIs) {
    std::vector<size_t> used(std::size(rules));
    for (const Scenario& scenario : scenarios()) {
        if (scenario.writesLog()) {
            checkScenario(scenario, used);
        }
    }
    for (size_t i = 0; i < std::size(rules); ++i) {
        EXPECT_GT(used[i], 0u) << "no scenario writes: " << rules[i].line;
    }
}

}  // namespace
}  // namespace vok::test
