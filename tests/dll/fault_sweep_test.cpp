// Every system call of a call fails once: nothing breaks, nothing is closed wrongly, and the next
// call works as if nothing had been.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>

#include "dll/job_fixture.h"

namespace vok::test {
namespace {

struct Scenario {
    const char* name;
    OsRelease os;
    bool byPipes;
    bool isRunning;  // the companions
};

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
    return out << scenario.name;
}

const Scenario launches[] = {
    {"On9xCold", os::win98, false, false},         {"On9xWarm", os::win98, false, true},
    {"ByMessagesCold", os::win2000, false, false}, {"ByMessagesWarm", os::winXp, false, true},
    {"ByPipesCold", os::winXp, true, false},       {"ByPipesWarm", os::win10, true, true},
};

void prepare(Job& job, const Scenario& scenario) {
    const Companions companions{.suffix = ""};
    if (scenario.byPipes) {
        job.system.separateSessions();
    }
    if (scenario.isRunning) {
        companions.runDral(job.system);
        companions.runNemb(job.system);
    }
    companions.appearWhenStarted(job.system);
}

// Fails call after call, until there is none left that could.
void sweep(const std::function<bool(size_t k)>& fires) {
    size_t k = 1;
    while (fires(k)) {
        ++k;
    }
    EXPECT_GT(k, 5u);
}

constexpr size_t ways[] = {0, 1, 2};

// Nothing destroys an environment where the function for it was not found.
bool lacksDestroy(const Job& job) {
    const Lines lookUps = job.system.calls.linesOf("GetProcAddress");
    return std::any_of(lookUps.begin(), lookUps.end(), [](const std::string& line) {
        return line.find("DestroyEnvironmentBlock") != std::string::npos &&
               !line.ends_with("found");
    });
}

void expectHandlesInOrder(const Job& job) {
    EXPECT_EQ(job.system.complaints, Lines());
    EXPECT_EQ(job.system.handles.countOpen(Kind::mutex), 0u);
    EXPECT_LE(job.system.handles.countOpen(Kind::environment), lacksDestroy(job) ? 1u : 0u);
    // A printer without a prefix in the registry is left open.
    const bool lacksPrefix = job.record.nembMode == VOK_MODE_WINDOW && !job.record.hNEMB;
    EXPECT_LE(job.system.handles.countOpen(Kind::printer), lacksPrefix ? 1u : 0u);
}

void launchWithFault(const Scenario& scenario, size_t way) {
    sweep([&](size_t k) {
        SCOPED_TRACE(std::string(scenario.name) + ", call " + std::to_string(k) + ", way " +
                     std::to_string(way));
        Job job(scenario.os, Log::off);
        prepare(job, scenario);
        job.system.faults.failCall(k, way);
        const BOOL result = job.launch();
        const bool fired = job.system.faults.fired() != 0;
        EXPECT_EQ(result != 0, job.record.hDRAL != nullptr && job.record.hNEMB != nullptr);
        expectHandlesInOrder(job);
        job.system.faults.clear();
        job.record = {};
        EXPECT_EQ(job.launch(), 1);
        return fired;
    });
}

class LaunchFaultSweep : public testing::TestWithParam<Scenario> {};

TEST_P(LaunchFaultSweep, NothingBreaks) {
    for (const size_t way : ways) {
        launchWithFault(GetParam(), way);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, LaunchFaultSweep, testing::ValuesIn(launches),
                         [](const auto& scenario) { return scenario.param.name; });

// With everything that the logging asks for: whatever fails of it, the message is posted. The mutex
// of the critical log stays for as long as the library does.
TEST(FaultSweep, LoggedMessage) {
    sweep([&](size_t k) {
        SCOPED_TRACE(k);
        Job job(os::winXp);
        Window& window = job.system.desktop.add("any", "any");
        const BYTE byte = 5;
        job.system.faults.failCall(k);
        const DWORD result = job.library.sendMsgEx("Office", window.handle, 0, 1, &byte, 1);
        EXPECT_EQ(result, window.received.size());
        EXPECT_EQ(job.system.calls.count("PostMessageA"), 1u);
        EXPECT_EQ(job.system.complaints, Lines());
        EXPECT_LE(job.system.handles.countOpen(Kind::mutex), 1u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::file), 0u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::key), 0u);
        return job.system.faults.fired() != 0;
    });
}

void eventWithFault(DWORD id, bool toDral, size_t way) {
    sweep([&](size_t k) {
        SCOPED_TRACE(std::to_string(id) + (toDral ? " to DRAL" : " to NEMB") + ", call " +
                     std::to_string(k) + ", way " + std::to_string(way));
        Job job(os::win7, Log::off);
        const HANDLE pipe = job.system.pipes.open("pipe");
        HANDLE& slot = toDral ? job.record.hDRAL : job.record.hNEMB;
        slot = pipe;
        job.record.dralMode = VOK_MODE_PIPE;
        job.record.nembMode = VOK_MODE_PIPE;
        job.record.epDoc = toDral && id == 1125 ? 0 : 0x10;
        job.system.faults.failCall(k, way);
        const LONG reply = toDral ? job.tellDral(id) : job.tellNemb(id);
        EXPECT_TRUE(reply == NOPRINT || reply == YESPRINT) << reply;
        EXPECT_EQ(job.system.complaints, Lines());
        EXPECT_EQ(job.system.handles.isOpen(pipe), slot == pipe);
        return job.system.faults.fired() != 0;
    });
}

// A failed exchange ends in an answer, and the pipe is the record's until it is closed.
TEST(FaultSweep, EventsByPipe) {
    for (const DWORD id : {1125u, 1127u, 1135u, 1137u}) {
        for (const size_t way : ways) {
            eventWithFault(id, true, way);
            eventWithFault(id, false, way);
        }
    }
}

}  // namespace
}  // namespace vok::test
