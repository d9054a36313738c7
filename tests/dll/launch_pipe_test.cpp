// VOKLaunchXFiles from 5.1 on where the spooler is in another session than the user: companions
// are started in the user's session and reached by pipes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "dll/launch_lines.h"

namespace vok::test {
namespace {

const HANDLE firstPipe = handleOf(Kind::pipe, 1);
const HANDLE secondPipe = handleOf(Kind::pipe, 2);

struct PipeJob : Job {
    explicit PipeJob(const OsRelease& os, Log log = Log::on) : Job(os, log) {
        system.separateSessions();
    }

    Lines dralBegins() const {
        return startBegins(system, "StartDRALXP") +
               Lines{"Using Pipes in StartDral", "dral title - DEMODRAL - Office"};
    }
    Lines nembBegins() const {
        return startBegins(system, "StartNEMBXP") +
               Lines{"Using Pipes in StartNembXP", "nemb title - DEMONEMB - Office"};
    }
    static Lines nembDoesNotRun() {
        return {R"(Trying to open mutex :Global\DEMONEMB - OFFICE)",
                "Error Openining Mutex rc=Win32(2The system cannot find the file specified."};
    }
    static std::string dralEnds(const void* pipe) {
        return lineOf("Return from StartDRALXP Pipes. Dral HPIPE = ", pipe);
    }
    static Lines nembEnds(const void* pipe) {
        return {lineOf("Nemb HPIPE from CreateNamedPipe = ", pipe),
                lineOf("Return from StartNEMBXP Pipes. Nemb HPIPE = ", pipe)};
    }
    // Of a companion's n-th token, process and thread; the last error is what the logging left.
    Lines userStart(const std::string& command, const std::string& name, uint32_t n) {
        return traceOf("LaunchProgram") +
               Lines{"The command line is " + command,
                     "WTSQueryUserToken rc=1 lastError=183 token handle=" + tokenInHex(n),
                     "Calling CPAU",
                     lineOf("VokData->h" + name + "Proc = ", handleOf(Kind::process, n)),
                     lineOf("VokData->h" + name + "Thread  = ", handleOf(Kind::thread, n))};
    }
    static std::string tokenInHex(uint32_t n) {
        char text[16];
        const auto low = reinterpret_cast<ULONG_PTR>(handleOf(Kind::token, n)) & 0xFFFFFFFF;
        std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(low));
        return text;
    }
};

TEST(LaunchByPipes, ColdStart) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.processes.onStart = [&](const Start&) { job.system.clock.advance(500); };
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.record.hDRAL, firstPipe);
        EXPECT_EQ(job.record.hNEMB, secondPipe);
        EXPECT_EQ(job.library.getDral(&job.record), firstPipe);
        EXPECT_EQ(job.library.getNemb(&job.record), secondPipe);
        EXPECT_EQ(job.record.dralMode, 1u);
        EXPECT_EQ(job.record.nembMode, 1u);
        EXPECT_EQ(job.record.hDRALProc, handleOf(Kind::process, 1));
        EXPECT_EQ(job.record.hDRALThread, handleOf(Kind::thread, 1));
        EXPECT_EQ(job.record.hNEMBProc, handleOf(Kind::process, 2));
        EXPECT_EQ(job.record.hNEMBThread, handleOf(Kind::thread, 2));
        EXPECT_EQ(job.record.epDoc, 0u);
        const System& system = job.system;
        job.expectNewLines(
            launchBegins() + job.dralBegins() + Lines{"dral path - DEMODRAL.EXE"} +
            job.userStart(dralCommand(system), "DRAL", 1) +
            Lines{"Launching Dlar, Path = " + dralCommand(system), job.dralEnds(firstPipe)} +
            job.nembBegins() + job.nembDoesNotRun() + Lines{"nemb path - DEMONEMB.EXE"} +
            job.userStart(nembPipeCommand(system), "NEMB", 2) +
            Lines{"Launching Nmeb, Path = " + nembPipeCommand(system)} + job.nembEnds(secondPipe) +
            Lines{launchSucceeded + "100000"});
    });
}

TEST(LaunchByPipes, ProcessRunsOnTheUsersDesktopWithTokenAndEnvironment) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.launch();
        ASSERT_EQ(job.system.processes.starts.size(), 2u);
        for (const Start& start : job.system.processes.starts) {
            EXPECT_EQ(start.by, StartedBy::createProcessAsUser);
            EXPECT_EQ(start.desktop, R"(Winsta0\Default)");
            EXPECT_TRUE(start.hasEnvironment);
        }
        EXPECT_EQ(job.system.handles.countOpen(Kind::token), 0u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::environment), 0u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::printer), 0u);
        EXPECT_TRUE(job.system.sessions.impersonating.empty());
    });
}

TEST(LaunchByPipes, CompanionsThatRunGetNewPipesAndAreNotStarted) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.desktop.add("any", "DEMODRAL - Office");
        job.system.desktop.add("any", "DEMONEMB - Office");
        EXPECT_EQ(job.launch(), 1);
        EXPECT_TRUE(job.system.processes.starts.empty());
        EXPECT_EQ(job.record.hDRAL, firstPipe);
        EXPECT_EQ(job.record.hNEMB, secondPipe);
        job.expectNewLines(launchBegins() + job.dralBegins() +
                           Lines{"The DRAL is already running", job.dralEnds(firstPipe)} +
                           job.nembBegins() +
                           Lines{"Nemb is already running! Create Pipe regardless"} +
                           job.nembEnds(secondPipe) + Lines{launchSucceeded + "100000"});
    });
}

// DRAL has no such mutex, and one that bears its title isn't looked at.
TEST(LaunchByPipes, NembInAnotherSessionIsKnownByItsMutex) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.mutexes.add(R"(Global\DEMONEMB - OFFICE)");
        job.system.mutexes.add(R"(Global\DEMODRAL - OFFICE)");
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.system.processes.starts.size(), 1u);
        const Lines lines = job.newLines();
        const Lines expected =
            job.nembBegins() +
            Lines{R"(Trying to open mutex :Global\DEMONEMB - OFFICE)", "Nemb is already running",
                  "Nemb is already running! Create Pipe regardless"} +
            job.nembEnds(secondPipe) + Lines{launchSucceeded + "100000"};
        ASSERT_GE(lines.size(), expected.size());
        EXPECT_EQ(Lines(lines.end() - static_cast<ptrdiff_t>(expected.size()), lines.end()),
                  expected);
        EXPECT_EQ(job.system.handles.countOpen(Kind::mutex), 0u);
    });
}

TEST(LaunchByPipes, MutexThatMayNotBeOpenedCountsAsNotRunning) {
    PipeJob job(os::win7);
    job.system.faults.fail("OpenMutexA", 1);
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.system.processes.starts.size(), 2u);
    const Lines lines = job.newLines();
    EXPECT_EQ(
        std::count(lines.begin(), lines.end(), "Error Openining Mutex rc=Win32(5Access is denied."),
        1);
}

TEST(LaunchByPipes, PrinterThatCannotBeOpenedStopsBeforeNemb) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.faults.fail("OpenPrinterA");
        EXPECT_EQ(job.launch(), 0);
        EXPECT_EQ(job.record.dralMode, 0u);
        job.expectNewLines(launchBegins() + startBegins(job.system, "StartDRALXP") +
                           Lines{"Using Pipes in StartDral",
                                 "Could not open the Printer. Exiting now...", launchFailed});
    });
}

TEST(LaunchByPipes, PrinterThatCannotBeOpenedForNemb) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.desktop.add("any", "DEMODRAL - Office");
        job.system.faults.fail("OpenPrinterA", 0, 2);
        EXPECT_EQ(job.launch(), 0);
        EXPECT_EQ(job.record.hDRAL, firstPipe);
        EXPECT_EQ(job.record.hNEMB, nullptr);
        EXPECT_EQ(job.record.nembMode, 0u);
        job.expectNewLines(launchBegins() + job.dralBegins() +
                           Lines{"The DRAL is already running", job.dralEnds(firstPipe)} +
                           startBegins(job.system, "StartNEMBXP") +
                           Lines{"Using Pipes in StartNembXP",
                                 "Could not open the Printer. Exiting now...", launchFailed});
    });
}

// A pipe-mode DRAL that is not reached stops the launch: NEMB keeps what it had.
TEST(LaunchByPipes, DriverDirectoryThatDoesNotFitStopsBeforeNemb) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.spooler.driverDirectory = std::string(260, 'd');
        job.record.hNEMB = handleOf(Kind::window, 9);
        EXPECT_EQ(job.launch(), 0);
        EXPECT_EQ(job.record.dralMode, 1u);
        EXPECT_EQ(job.record.hDRAL, nullptr);
        EXPECT_EQ(job.record.hNEMB, handleOf(Kind::window, 9));
        job.expectNewLines(launchBegins() + job.dralBegins() +
                           Lines{job.dralEnds(nullptr), launchFailed});
        EXPECT_TRUE(job.system.pipes.all().empty());
        job.expectNothingOpenBut();
    });
}

TEST(LaunchByPipes, DriverDirectoryThatDoesNotFitForNemb) {
    PipeJob job(os::winXp);
    job.system.desktop.add("any", "DEMODRAL - Office");
    job.system.spooler.driverDirectory = std::string(260, 'd');
    EXPECT_EQ(job.launch(), 0);
    EXPECT_EQ(job.record.hNEMB, nullptr);
    EXPECT_EQ(job.record.nembMode, 1u);
    job.expectNewLines(launchBegins() + job.dralBegins() +
                       Lines{"The DRAL is already running", job.dralEnds(firstPipe)} +
                       job.nembBegins() + job.nembDoesNotRun() +
                       Lines{"Return from StartNEMBXP Pipes. Nemb HPIPE = ", launchFailed});
}

TEST(LaunchByPipes, StartThatFailsMakesNoPipe) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.processes.refuse("DRAL", ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(job.launch(), 0);
        EXPECT_TRUE(job.system.pipes.all().empty());
        job.expectNewLines(
            launchBegins() + job.dralBegins() + Lines{"dral path - DEMODRAL.EXE"} +
            traceOf("LaunchProgram") +
            Lines{"The command line is " + dralCommand(job.system),
                  "WTSQueryUserToken rc=1 lastError=183 token handle=" + job.tokenInHex(1),
                  "Calling CPAU", "CPAU Failed lasterror=2", "VokData->hDRALProc = ",
                  "VokData->hDRALThread  = ", job.dralEnds(nullptr), launchFailed});
    });
}

TEST(LaunchByPipes, NembsStartThatFailsMakesNoPipe) {
    PipeJob job(os::win10);
    job.system.processes.refuse("NEMB", ERROR_ACCESS_DENIED);
    job.record.hNEMBProc = handleOf(Kind::process, 8);
    EXPECT_EQ(job.launch(), 0);
    EXPECT_EQ(job.system.pipes.all().size(), 1u);
    EXPECT_EQ(job.record.hDRAL, firstPipe);
    EXPECT_EQ(job.record.hNEMB, nullptr);
    EXPECT_EQ(job.record.hNEMBProc, nullptr);
    const Lines lines = job.newLines();
    ASSERT_GE(lines.size(), 6u);
    EXPECT_EQ(Lines(lines.end() - 6, lines.end()),
              (Lines{"Calling CPAU", "CPAU Failed lasterror=5",
                     "VokData->hNEMBProc = ", "VokData->hNEMBThread  = ",
                     "Return from StartNEMBXP Pipes. Nemb HPIPE = ", launchFailed}));
}

// The result isn't tested: the invalid handle counts as reached.
TEST(LaunchByPipes, PipeThatCannotBeMadeIsStoredAsItIs) {
    onEach<PipeJob>(os::allWithPipes, [](PipeJob& job) {
        job.system.desktop.add("any", "DEMODRAL - Office");
        job.system.desktop.add("any", "DEMONEMB - Office");
        job.system.faults.fail("CreateNamedPipeA", 0, 1, Lasting::forEver);
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.record.hDRAL, INVALID_HANDLE_VALUE);
        EXPECT_EQ(job.record.hNEMB, INVALID_HANDLE_VALUE);
        job.expectNewLines(launchBegins() + job.dralBegins() +
                           Lines{"The DRAL is already running",
                                 "Return from StartDRALXP Pipes. Dral HPIPE = 0xFFFFFFFFFFFFFFFF"} +
                           job.nembBegins() +
                           Lines{"Nemb is already running! Create Pipe regardless",
                                 "Nemb HPIPE from CreateNamedPipe = 0xFFFFFFFFFFFFFFFF",
                                 "Return from StartNEMBXP Pipes. Nemb HPIPE = 0xFFFFFFFFFFFFFFFF",
                                 launchSucceeded + "100000"});
    });
}

TEST(LaunchByPipes, ThirdPipeOfAPrinterIsOneTooMany) {
    PipeJob job(os::winXp, Log::off);
    job.system.desktop.add("any", "DEMODRAL - Office");
    job.system.desktop.add("any", "DEMONEMB - Office");
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.record.hNEMB, handleOf(Kind::pipe, 4));
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.record.hDRAL, INVALID_HANDLE_VALUE);
    EXPECT_EQ(job.record.hNEMB, INVALID_HANDLE_VALUE);
}

TEST(LaunchByPipes, OlderSystemsNeverUsePipes) {
    for (const OsRelease& os : os::allWithoutPipes) {
        SCOPED_TRACE(os);
        PipeJob job(os);
        job.launch();
        EXPECT_EQ(job.record.dralMode, 2u);
        EXPECT_EQ(job.record.nembMode, 2u);
        EXPECT_EQ(job.system.calls.count("ProcessIdToSessionId"), 0u);
    }
}

// A version that can't be read afresh counts as NT before 5.0, whatever was read at load.
TEST(LaunchByPipes, VersionThatCannotBeReadCountsAsNt4) {
    PipeJob job(os::win7, Log::off);
    job.system.faults.fail("GetVersionExA", 0, 1, Lasting::forEver);
    job.launch();
    EXPECT_EQ(job.record.dralMode, 2u);
    EXPECT_TRUE(job.system.processes.starts.at(0).mentions(R"(\2\DEMODRAL.EXE)"));
}

}  // namespace
}  // namespace vok::test
