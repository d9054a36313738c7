#include "simulated_job.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace vok::bench {

using namespace vok::test;

namespace {

// Calls that the simulation answers without a record: nothing else tells how often they are made.
DWORD WINAPI currentThreadId() {
    Call call("GetCurrentThreadId");
    return call.done(real.getCurrentThreadId());
}

DWORD WINAPI currentProcessId() {
    Call call("GetCurrentProcessId");
    return call.done(call.system().processes.ownId);
}

HANDLE WINAPI currentProcess() {
    Call call("GetCurrentProcess");
    return call.done(INVALID_HANDLE_VALUE);
}

void WINAPI setLastError(DWORD error) {
    Call call("SetLastError");
    call.setError(error);
    call.done(0);
}

const std::map<std::string, void*> recordedToo = {
    {"GetCurrentThreadId", reinterpret_cast<void*>(currentThreadId)},
    {"GetCurrentProcessId", reinterpret_cast<void*>(currentProcessId)},
    {"GetCurrentProcess", reinterpret_cast<void*>(currentProcess)},
    {"SetLastError", reinterpret_cast<void*>(setLastError)}};

const OsRelease& systemOf(Route route) {
    return route == Route::nineX ? os::win98 : os::winXp;
}

}  // namespace

std::string floorDll() {
    return VOK_FLOOR_DLL;
}

SimulatedJob::SimulatedJob(const std::string& file, const Case& one, Logging logging, bool ticking)
    : one_(one),
      system_(systemOf(one.route)),
      module_(file, VOK_MODEL_PREFIX "vok.dll", recordedToo) {
    system_.addPrinter(job_.printer).installConfig();
    for (const OptionValue& option : optionsFor(logging)) {
        system_.registry.setNumber(system_.loggerKey(), option.name, option.value);
    }
    makeCompanions();
    if (one.route == Route::pipe) {
        system_.separateSessions();
        openPipes();
    }
    module_.attach();
    exports_ = exportsOf(module_.module());
    record_ = recordFor(one_, job_);
    system_.clock.stepPerRead = ticking ? 1 : 0;
    for (const char* name : {"GetTickCount", "GetLastError", "GetCurrentThreadId",
                             "GetCurrentProcessId", "GetCurrentProcess", "SetLastError"}) {
        system_.calls.recordAlso(name);
    }
}

void SimulatedJob::makeCompanions() {
    job_.dralSuffix = "office";
    const bool is9x = one_.route == Route::nineX;
    const std::string hidden = VOK_DRAL_HIDDEN + job_.dralSuffix;
    const std::string dralTitle = VOK_DRAL_TITLE + job_.printer;
    const std::string nembClass = VOK_MODEL_PREFIX VOK_NEMB_TITLE;
    job_.dral = is9x ? system_.desktop.add(hidden, dralTitle).handle
                     : system_.desktop.add("status", VOK_MODEL_PREFIX + dralTitle).handle;
    job_.nemb = system_.desktop.add(nembClass, nembClass + job_.printer).handle;
}

void SimulatedJob::openPipes() {
    if (one_.kind != Case::Kind::launch) {
        job_.dral = system_.pipes.open(VOK_DRAL_PIPE + job_.printer);
        job_.nemb = system_.pipes.open(VOK_NEMB_PIPE + job_.printer);
    }
}

LONG_PTR SimulatedJob::perform() {
    system_.calls.clear();
    return bench::perform(one_, exports_, job_, record_);
}

std::vector<CallRecord> SimulatedJob::calls() const {
    std::vector<CallRecord> own;
    for (const CallRecord& call : system_.calls.all()) {
        if (call.name != "SetLastError") {
            own.push_back(call);
            continue;
        }
        const auto read = std::find_if(own.rbegin(), own.rend(), [](const CallRecord& earlier) {
            return earlier.name == "GetLastError";
        });
        own.erase(std::prev(read.base()));
    }
    return own;
}

}  // namespace vok::bench
