// VOKLaunchXFiles on the 9x family: companions are found by their windows or started with
// CreateProcessA and waited for.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dll/launch_lines.h"

namespace vok::test {
namespace {

constexpr const char* hiddenName = "DRAL Hidden Window-4711";
constexpr const char* nembClass = "DEMONEMB - ";
constexpr const char* nembTitle = "DEMONEMB - Office";

struct Job9x : Job {
    explicit Job9x(const OsRelease& os, Log log = Log::on) : Job(os, log) {
        std::strcpy(record.dralTitleSuffix, "4711");
    }
    static Lines dralSearch(const void* window) {
        return {"Searching Dral Title = DRAL - Office", lineOf("hDRAL = ", window)};
    }
    static Lines dralStart() {
        return prefixLookup() + traceOf("LaunchXFile") +
               Lines{R"(The App Name = C:\WINDOWS\system32\DEMOdral.exe)"
                     R"(The Cmd Line =  SPLPP /F=Office)"};
    }
    static Lines dralWait(const void* window, int misses) {
        return {
            "FindXWindow className = DRAL Hidden Window-4711FindXWindow WindowName = ",
            "FindXWindow = " + logText(window) + "FindWindow attempts = " + std::to_string(misses)};
    }
    static Lines nembSearch(const void* window) {
        return traceOf("StartNEMB9X") + prefixLookup() + Lines{lineOf("hNEMB =  ", window)};
    }
    static Lines nembStart() {
        return traceOf("LaunchXFile") + Lines{R"(The App Name = C:\WINDOWS\system32\DEMOnemb.exe)"
                                              R"(The Cmd Line =  SPLPP /F=Office /J=1)"};
    }
    static Lines nembWait(const void* window, int misses) {
        return {
            "Launching Nmeb, Path =  SPLPP /F=Office /J=1",
            "FindXWindow className = DEMONEMB - FindXWindow WindowName = DEMONEMB - Office",
            "FindXWindow = " + logText(window) + "FindWindow attempts = " + std::to_string(misses)};
    }
    void windowsComeWithTheStart(size_t misses) {
        system.processes.onStart = [this, misses](const Start& start) {
            const bool isDral = start.mentions("dral");
            Window& window = isDral ? system.desktop.add(hiddenName, hiddenName)
                                    : system.desktop.add(nembClass, nembTitle);
            window.hiddenFor = misses;
        };
    }
};

TEST(LaunchOn9x, ColdStartWaitsForTheWindows) {
    onEach<Job9x>(os::all9x, [](Job9x& job) {
        job.windowsComeWithTheStart(2);
        EXPECT_EQ(job.launch(), 1);
        const HANDLE dral = handleOf(Kind::window, 1);
        const HANDLE nemb = handleOf(Kind::window, 2);
        EXPECT_EQ(job.record.hDRAL, dral);
        EXPECT_EQ(job.record.hNEMB, nemb);
        EXPECT_EQ(job.record.dralMode, 0u);
        EXPECT_EQ(job.record.nembMode, 0u);
        EXPECT_EQ(job.record.hDRALProc, handleOf(Kind::process, 1));
        EXPECT_EQ(job.record.hDRALThread, handleOf(Kind::thread, 1));
        EXPECT_EQ(job.record.hNEMBProc, handleOf(Kind::process, 2));
        EXPECT_EQ(job.record.hNEMBThread, handleOf(Kind::thread, 2));
        job.expectNewLines(launchBegins() + job.dralSearch(nullptr) + job.dralStart() +
                           job.dralWait(dral, 2) + job.nembSearch(nullptr) + job.nembStart() +
                           job.nembWait(nemb, 2) + Lines{launchSucceeded + "100000"});
        EXPECT_EQ(job.system.clock.passed(), 40u);
    });
}

TEST(LaunchOn9x, FindsBothAndStartsNothing) {
    onEach<Job9x>(os::all9x, [](Job9x& job) {
        const Window& dral = job.system.desktop.add(hiddenName, "DRAL - Office");
        const Window& nemb = job.system.desktop.add(nembClass, nembTitle);
        EXPECT_EQ(job.launch(), 1);
        EXPECT_EQ(job.record.hDRAL, dral.handle);
        EXPECT_EQ(job.record.hNEMB, nemb.handle);
        EXPECT_TRUE(job.system.processes.starts.empty());
        job.expectNewLines(launchBegins() + job.dralSearch(dral.handle) +
                           job.nembSearch(nemb.handle) + Lines{launchSucceeded + "100000"});
        job.expectNothingOpenBut();
    });
}

TEST(LaunchOn9x, DralThatNeverShowsItsWindowStopsBeforeNemb) {
    onEach<Job9x>(os::all9x, [](Job9x& job) {
        EXPECT_EQ(job.launch(), 0);
        EXPECT_EQ(job.record.hDRAL, nullptr);
        EXPECT_EQ(job.record.hNEMB, nullptr);
        EXPECT_EQ(job.record.hDRALProc, handleOf(Kind::process, 1));
        job.expectNewLines(launchBegins() + job.dralSearch(nullptr) + job.dralStart() +
                           job.dralWait(nullptr, 200) + Lines{launchFailed});
        EXPECT_EQ(job.system.clock.passed(), 2000u);
        EXPECT_EQ(job.system.calls.count("FindWindowA"), 201u);
    });
}

TEST(LaunchOn9x, WindowOfTheLastAttempt) {
    Job9x job(os::win98);
    job.system.desktop.add(nembClass, nembTitle);
    job.windowsComeWithTheStart(199);
    EXPECT_EQ(job.launch(), 1);
    const HANDLE dral = job.record.hDRAL;
    job.expectNewLines(launchBegins() + job.dralSearch(nullptr) + job.dralStart() +
                       job.dralWait(dral, 199) + job.nembSearch(handleOf(Kind::window, 1)) +
                       Lines{launchSucceeded + "100000"});
}

TEST(LaunchOn9x, NembThatNeverShowsItsWindow) {
    Job9x job(os::winMe);
    const Window& dral = job.system.desktop.add(hiddenName, "DRAL - Office");
    EXPECT_EQ(job.launch(), 0);
    EXPECT_EQ(job.record.hDRAL, dral.handle);
    EXPECT_EQ(job.record.hNEMB, nullptr);
    job.expectNewLines(launchBegins() + job.dralSearch(dral.handle) + job.nembSearch(nullptr) +
                       job.nembStart() + job.nembWait(nullptr, 200) + Lines{launchFailed});
}

TEST(LaunchOn9x, PrinterThatCannotBeOpened) {
    onEach<Job9x>(os::all9x, [](Job9x& job) {
        job.system.faults.fail("OpenPrinterA");
        EXPECT_EQ(job.launch(), 0);
        job.expectNewLines(launchBegins() +
                           Lines{"Could not open the Printer. Exiting now...", launchFailed});
    });
}

TEST(LaunchOn9x, PrinterThatCannotBeOpenedForNemb) {
    Job9x job(os::win95);
    const Window& dral = job.system.desktop.add(hiddenName, "DRAL - Office");
    job.system.faults.fail("OpenPrinterA", 0, 2);
    EXPECT_EQ(job.launch(), 0);
    job.expectNewLines(launchBegins() + job.dralSearch(dral.handle) + traceOf("StartNEMB9X") +
                       Lines{"Could not open the Printer. Exiting now...", launchFailed});
}

TEST(LaunchOn9x, ProcessThatCannotBeCreated) {
    onEach<Job9x>(os::all9x, [](Job9x& job) {
        job.system.processes.refuse("dral", ERROR_FILE_NOT_FOUND);
        job.record.hDRALProc = handleOf(Kind::process, 8);
        EXPECT_EQ(job.launch(), 0);
        EXPECT_EQ(job.record.hDRALProc, handleOf(Kind::process, 8));
        job.expectNewLines(launchBegins() + job.dralSearch(nullptr) + job.dralStart() +
                           Lines{"CreateProcess Failed! The error = 2", launchFailed});
        job.expectNothingOpenBut();
    });
}

TEST(LaunchOn9x, NembsProcessThatCannotBeCreated) {
    Job9x job(os::win98);
    const Window& dral = job.system.desktop.add(hiddenName, "DRAL - Office");
    job.system.processes.refuse("nemb", 1455);
    EXPECT_EQ(job.launch(), 0);
    job.expectNewLines(launchBegins() + job.dralSearch(dral.handle) + job.nembSearch(nullptr) +
                       job.nembStart() +
                       Lines{"CreateProcess Failed! The error = 1455", launchFailed});
}

// The port's name makes no difference here, not even a network port's.
TEST(LaunchOn9x, PortNameIsNotLookedAt) {
    Job9x job(os::win98, Log::off);
    job.windowsComeWithTheStart(0);
    EXPECT_EQ(job.launch(R"(\\server\queue)"), 1);
    EXPECT_EQ(job.system.calls.count("CreateProcessA"), 2u);
    EXPECT_EQ(job.system.calls.count("RegOpenKeyExA"), 0u);
}

}  // namespace
}  // namespace vok::test
