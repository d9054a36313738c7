#include "faults/run.h"

#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/model.h"

namespace vok::test {
namespace {

constexpr DWORD afterwards = 1299;  // a message that no scenario sends
constexpr DWORD pastOptionCache = 6000;

// Runs the steps; whatever leaves one as an exception is a problem.
void runSteps(const Exports& library, const Scenario& scenario, Job& job,
              std::vector<LONG>& results, std::vector<std::string>& problems) {
    for (const Step& step : scenario.steps) {
        try {
            results.push_back(perform(library, step, job));
        } catch (const std::exception& exception) {
            problems.push_back(std::string("exception: ") + exception.what());
        } catch (...) {
            problems.emplace_back("exception of another type");
        }
    }
}

bool failed(const CallRecord& record, std::string_view name) {
    return record.name == name &&
           (record.result.starts_with("0") || record.result.starts_with("null"));
}

// A logger without its mutex switches logging off for good; so does an option that was lost.
bool isLoggingOff(const System& system) {
    if (system.registry.number(system.loggerKey(), "startLog").value_or(0) == 0) {
        return true;
    }
    for (const CallRecord& record : system.calls.all()) {
        const bool mutex = failed(record, "CreateMutexA");
        const bool descriptor = failed(record, "InitializeSecurityDescriptor") ||
                                failed(record, "SetSecurityDescriptorDacl");
        if (mutex || descriptor) {
            return true;
        }
    }
    return false;
}

std::string hitCall(const System& system, const std::optional<Arming>& arming) {
    if (!arming) {
        return {};
    }
    size_t failable = 0;
    for (const CallRecord& record : system.calls.all()) {
        failable += failureCount(record.name) > 0 ? 1 : 0;
        if (failable == arming->call) {
            return record.line();
        }
    }
    return {};
}

}  // namespace

void checkNextCall(System& system, const Exports& library, const Scenario& scenario,
                   std::vector<std::string>& problems) {
    const bool logs = scenario.writesLog() && !isLoggingOff(system);
    const Window& window = system.desktop.add("afterwards", "afterwards");
    system.clock.advance(pastOptionCache);
    const BYTE data = 'A';
    if (library.sendMsgEx("after", window.handle, VOK_MODE_WINDOW, afterwards, &data, 1) == 0 ||
        window.received.size() != 1) {
        problems.emplace_back("the next call did not work");
    }
    const bool common = system.registry.number(system.loggerKey(), "CommonLog") == 1;
    const std::string log = system.files.text(common ? R"(C:\DEMOXFiles.log)" : system.logPath());
    if (logs && log.find("FN=after hXfile=") == std::string::npos) {
        problems.emplace_back("the next call did not log");
    }
}

RunReport run(const Scenario& scenario, const std::optional<Arming>& arming) {
    RunReport report;
    Job job("Office", scenario.port);
    System system(scenario.os);
    prepareMachine(system, scenario);
    scenario.prepare(system, job.record());
    const VKDATA before = job.record();
    {
        const Started library;
        system.calls.clear();
        system.faults.clear();
        if (arming) {
            system.faults.failCall(arming->call, arming->way, arming->lasting);
        }
        std::vector<LONG> results;
        runSteps(*library, scenario, job, results, report.problems);
        report.fired = system.faults.fired();
        report.failableCalls = system.faults.failableCalls();
        report.failed = hitCall(system, arming);
        system.faults.clear();
        checkModel(system, scenario, before, results, job.record(), report.problems);
        checkNextCall(system, *library, scenario, report.problems);
    }
    for (std::string& problem : problemsAfter(system, scenario, job, before)) {
        report.problems.push_back(std::move(problem));
    }
    return report;
}

}  // namespace vok::test
