// VOKLaunchXFiles on NT where the spooler shares the user's session: companions are found or
// started with WinExec and reached by their windows.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dll/launch_lines.h"

namespace vok::test {
namespace {

constexpr const char* dralTitle = "DEMODRAL - Office";
constexpr const char* hiddenName = "DRAL Hidden Window-4711";
constexpr const char* nembClass = "DEMONEMB - ";
constexpr const char* nembTitle = "DEMONEMB - Office";

struct MessageJob : Job {
    explicit MessageJob(const OsRelease& os, Log log = Log::on) : Job(os, log) {
        std::strcpy(record.dralTitleSuffix, "4711");
    }

    Lines dralBegins() const {
        return startBegins(system, "StartDRALXP") +
               Lines{"Using Messages in StartDRALXP", "dral title - DEMODRAL - Office"};
    }
    Lines dralStarts(const void* window) const {
        return dralBegins() + Lines{"dral PATH - DEMODRAL.EXE",
                                    "Launching Dlar, Path = " + dralCommand(system),
                                    lineOf("WinExec rc = 0. Dral HWND = ", window)};
    }
    Lines nembBegins() const {
        return startBegins(system, "StartNEMBXP") + Lines{"Using Messages in StartNembXP"};
    }
    Lines nembStarts(const void* window) const {
        return nembBegins() + Lines{"Launching Nmeb, Path = " + nembMessageCommand(system),
                                    lineOf("WinExec rc = 0. Nemb HWND = ", window)};
    }
    // Answers 0, with these handles in the record, which are windows.
    void expectFailure(HANDLE dral, HANDLE nemb) {
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(record.hDRAL, dral);
        EXPECT_EQ(record.hNEMB, nemb);
    }
};

TEST(LaunchByMessages, ColdStartFindsNoWindowYetAndAnswersZero) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        job.expectFailure(nullptr, nullptr);
        EXPECT_EQ(job.record.dralMode, 2u);
        EXPECT_EQ(job.record.nembMode, 2u);
        EXPECT_EQ(job.record.hDRALProc, nullptr);
        EXPECT_EQ(job.record.hNEMBProc, nullptr);
        job.expectNewLines(launchBegins() + job.dralStarts(nullptr) + job.nembStarts(nullptr) +
                           Lines{launchFailed});
        ASSERT_EQ(job.system.processes.starts.size(), 2u);
        for (const Start& start : job.system.processes.starts) {
            EXPECT_EQ(start.by, StartedBy::winExec);
            EXPECT_EQ(start.show, UINT{SW_SHOW});
        }
        job.expectNothingOpenBut();
    });
}

TEST(LaunchByMessages, FindsBothByTheirTitlesAndStartsNothing) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        const Window& dral = job.system.desktop.add("any class", dralTitle);
        const Window& nemb = job.system.desktop.add(nembClass, nembTitle);
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.record.hDRAL, dral.handle);
        EXPECT_EQ(job.record.hNEMB, nemb.handle);
        EXPECT_EQ(job.library.getDral(&job.record), dral.handle);
        EXPECT_EQ(job.library.getNemb(&job.record), nemb.handle);
        EXPECT_TRUE(job.system.processes.starts.empty());
        job.expectNewLines(launchBegins() + job.dralBegins() + job.nembBegins() +
                           Lines{launchSucceeded + "100000"});
    });
}

TEST(LaunchByMessages, WindowsThatComeWithTheStartAreFoundAtOnce) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        job.system.processes.onStart = [&](const Start& start) {
            job.system.clock.advance(500);
            if (start.mentions("DRAL")) {
                job.system.desktop.add(hiddenName, hiddenName);
            } else {
                job.system.desktop.add(nembClass, nembTitle);
            }
        };
        EXPECT_EQ(job.launch(), 1);
        const HANDLE dral = handleOf(Kind::window, 1);
        const HANDLE nemb = handleOf(Kind::window, 2);
        EXPECT_EQ(job.record.hDRAL, dral);
        EXPECT_EQ(job.record.hNEMB, nemb);
        // The time is that of the call's beginning.
        job.expectNewLines(launchBegins() + job.dralStarts(dral) + job.nembStarts(nemb) +
                           Lines{launchSucceeded + "100000"});
    });
}

// DRAL's hidden window doesn't carry the first title, NEMB's class counts as well as its title.
TEST(LaunchByMessages, OtherWindowsAreNotTaken) {
    MessageJob job(os::winXp);
    job.system.desktop.add(hiddenName, "DRAL - Office");
    job.system.desktop.add("NEMB - ", nembTitle);
    job.system.desktop.add(nembClass, "DEMONEMB - Office2");
    // After its start DRAL is searched by its hidden class alone.
    job.expectFailure(handleOf(Kind::window, 1), nullptr);
    EXPECT_EQ(job.system.processes.starts.size(), 2u);
}

TEST(LaunchByMessages, PrinterThatCannotBeOpenedStopsBeforeNemb) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        job.system.faults.fail("OpenPrinterA");
        job.expectFailure(nullptr, nullptr);
        EXPECT_EQ(job.record.dralMode, 0u);
        EXPECT_EQ(job.record.nembMode, 0u);
        job.expectNewLines(launchBegins() + startBegins(job.system, "StartDRALXP") +
                           Lines{"Using Messages in StartDRALXP",
                                 "Could not open the Printer. Exiting now...", launchFailed});
        job.expectNothingOpenBut();
    });
}

// It is the record's mode that counts, also one that an earlier launch has left.
TEST(LaunchByMessages, ModeOfAnEarlierLaunchLetsNembStart) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        MessageJob job(os, Log::off);
        job.record.dralMode = VOK_MODE_WINDOW;
        job.system.faults.fail("OpenPrinterA");
        const Window& nemb = job.system.desktop.add(nembClass, nembTitle);
        job.expectFailure(nullptr, nemb.handle);
        EXPECT_EQ(job.system.calls.count("OpenPrinterA"), 2u);
    }
}

TEST(LaunchByMessages, PrinterThatCannotBeOpenedForNemb) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        job.system.faults.fail("OpenPrinterA", 0, 2);
        job.expectFailure(nullptr, nullptr);
        EXPECT_EQ(job.record.dralMode, 2u);
        EXPECT_EQ(job.record.nembMode, 0u);
        job.expectNewLines(launchBegins() + job.dralStarts(nullptr) + job.nembBegins() +
                           Lines{"Could not open the Printer. Exiting now...", launchFailed});
        job.expectNothingOpenBut();
    });
}

TEST(LaunchByMessages, DriverDirectoryThatDoesNotFit) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        job.system.spooler.driverDirectory = std::string(260, 'd');
        job.expectFailure(nullptr, nullptr);
        job.expectNewLines(launchBegins() + job.dralBegins() + job.nembBegins() +
                           Lines{launchFailed});
        job.expectNothingOpenBut();
    });
}

TEST(LaunchByMessages, DriverDirectoryThatCannotBeHadIsEmpty) {
    MessageJob job(os::winXp, Log::off);
    job.system.spooler.driverDirectoryError = RPC_S_SERVER_UNAVAILABLE;
    job.expectFailure(nullptr, nullptr);
    expectCallsOf(job.system, "WinExec",
                  {R"(WinExec("\3\DEMODRAL.EXE SPLPP /F=Office", 5) = 33)",
                   R"(WinExec("\3\DEMOnemb.exe SPLPP /F=Office /J=1", 5) = 33)"});
}

TEST(LaunchByMessages, StartRefused) {
    for (const UINT result : {0u, 2u, 31u}) {
        MessageJob job(os::win2000);
        job.system.faults.fail("WinExec", Failure{static_cast<LONG_PTR>(result)}, 1,
                               Lasting::forEver);
        job.expectFailure(nullptr, nullptr);
        job.expectNewLines(
            launchBegins() + job.dralBegins() +
            Lines{"dral PATH - DEMODRAL.EXE", "Launching Dlar, Path = " + dralCommand(job.system)} +
            job.nembBegins() + Lines{launchFailed});
        EXPECT_EQ(job.system.calls.count("FindWindowA"), 2u);
        job.expectNothingOpenBut();
    }
}

TEST(LaunchByMessages, SmallestResultThatCountsAsStarted) {
    MessageJob job(os::win2000);
    job.system.faults.fail("WinExec", Failure{32}, 1, Lasting::forEver);
    job.expectFailure(nullptr, nullptr);
    job.expectNewLines(launchBegins() + job.dralStarts(nullptr) + job.nembStarts(nullptr) +
                       Lines{launchFailed});
}

TEST(LaunchByMessages, PrinterWithoutPrefixLeavesPrinterAndKeyOpen) {
    onEach<MessageJob>(os::allNt, [](MessageJob& job) {
        const std::string key =
            R"(System\CurrentControlSet\control\Print\Printers\Office\PrinterDriverData)";
        job.system.registry.removeValue(key, "Printer Prefix");
        job.expectFailure(nullptr, nullptr);
        EXPECT_EQ(job.record.nembMode, 2u);
        job.expectNewLines(launchBegins() + job.dralStarts(nullptr) + job.nembBegins() +
                           Lines{"Did not find matching printer in Registry ", launchFailed});
        EXPECT_EQ(job.system.handles.countOpen(Kind::printer), 1u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::key), 1u);
    });
}

TEST(LaunchByMessages, PrefixOfFiftyBytesIsReadAndALongerOneIsNot) {
    for (const size_t size : {50u, 51u}) {
        MessageJob job(os::winXp, Log::off);
        job.system.addPrinter("Office", std::string(size - 1, 'p'));
        job.launch();
        EXPECT_EQ(job.system.calls.count("WinExec"), size == 50 ? 2u : 1u);
    }
}

TEST(LaunchByMessages, PrinterWithoutKeyHasAnEmptyPrefix) {
    MessageJob job(os::winXp);
    job.system.registry.removeKey(
        R"(System\CurrentControlSet\control\Print\Printers\Office\PrinterDriverData)");
    const Window& nemb = job.system.desktop.add("NEMB - ", "NEMB - Office");
    job.expectFailure(nullptr, nemb.handle);
    job.expectNewLines(launchBegins() + job.dralStarts(nullptr) + job.nembBegins() +
                       Lines{launchFailed});
}

TEST(LaunchByMessages, PrefixOfNembsNamesIsThePrintersOwn) {
    MessageJob job(os::winXp, Log::off);
    job.system.addPrinter("Office", "MODL");
    job.launch();
    expectCallsOf(job.system, "FindWindowA",
                  {R"(FindWindowA(null, "DEMODRAL - Office") = null (error 2))",
                   R"(FindWindowA("DRAL Hidden Window-4711", null) = null (error 2))",
                   R"(FindWindowA("MODLNEMB - ", "MODLNEMB - Office") = null (error 2))",
                   R"(FindWindowA("MODLNEMB - ", "MODLNEMB - Office") = null (error 2))"});
    EXPECT_TRUE(job.system.processes.starts.at(1).mentions("MODLnemb.exe SPLPP"));
}

// The prefix is that of the file's name; where that is short or can't be had, so is the prefix.
TEST(LaunchByMessages, ModelPrefixFromTheLibrarysOwnName) {
    const struct {
        std::string path;
        std::string prefix;
        Lines lines;
    } cases[] = {
        {R"(C:\x\abc)",
         "abc",
         {R"(The module name = C:\x\abc)", R"(Got The File Name! File Name = \abc)"}},
        {"ABCDvok.dll", "ABCD", {"The module name = ABCDvok.dll", "Did NOT get File Name"}},
        {R"(C:\x\)", "", {R"(The module name = C:\x\)", R"(Got The File Name! File Name = \)"}},
    };
    for (const auto& one : cases) {
        MessageJob job(os::win2000);
        job.system.modules.config.fileName = one.prefix + "cfg.dll";
        job.system.modules.libraryPath = one.path;
        job.system.spooler.add("Office");
        job.launch();
        const Lines log = job.system.files.lines("C:\\" + one.prefix + "Vok.log");
        Lines expected;
        for (const std::string& line : one.lines) {
            expected.push_back("VOK        " + line);
        }
        ASSERT_GT(log.size(), 8u);
        EXPECT_EQ(withoutClock(Lines(log.begin() + 5, log.begin() + 7)), expected);
        EXPECT_TRUE(job.system.processes.starts.at(0).mentions(one.prefix + "DRAL.EXE"));
    }
}

TEST(LaunchByMessages, ModelPrefixThatCannotBeHadIsEmpty) {
    MessageJob job(os::win2000, Log::off);
    job.system.faults.fail("GetModuleFileNameA", 0, 1, Lasting::forEver);
    job.launch();
    EXPECT_EQ(job.system.processes.starts.at(0).commandLine,
              job.system.driverPath() + "DRAL.EXE SPLPP /F=Office");
}

// Without sessions to ask for, a missing entry point counts as session 0 on both sides.
TEST(LaunchByMessages, SessionsThatCannotBeAskedForCountAsTheSame) {
    MessageJob job(os::winXp);
    job.system.separateSessions();
    job.system.modules.hideFunction("WTSGetActiveConsoleSessionId");
    job.system.modules.hideFunction("ProcessIdToSessionId");
    job.launch();
    EXPECT_EQ(job.record.dralMode, 2u);
    EXPECT_EQ(job.record.nembMode, 2u);
}

}  // namespace
}  // namespace vok::test
