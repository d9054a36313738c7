// What every export does before and after its work: the per-call set-up of the logging, which may
// fail in any way without the work being any different. And the getters, which do nothing else.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "dll/job_fixture.h"

namespace vok::test {
namespace {

const std::string commonKey = R"(SOFTWARE\Demo)";

// The four exports that do work, each in a way that reaches a window.
struct Export {
    const char* name;
    std::function<LONG(Job&, HWND)> call;
    LONG result;
};

const std::vector<Export>& exports() {
    static const std::vector<Export> all = {
        {"VOKLaunchXFiles", [](Job& job, HWND) { return static_cast<LONG>(job.launch()); }, 0},
        {"VOKSendDralMsg",
         [](Job& job, HWND window) {
             job.record.hDRAL = window;
             return job.tellDral(SM_STARTPAGE);
         },
         7},
        {"VOKSendNembMsg",
         [](Job& job, HWND window) {
             job.record.hNEMB = window;
             return job.tellNemb(SM_STARTPAGE);
         },
         7},
        {"VOKSendMsgEx",
         [](Job& job, HWND window) {
             const BYTE byte = 1;
             return static_cast<LONG>(job.library.sendMsgEx("Office", window, 0, 1, &byte, 1));
         },
         1},
    };
    return all;
}

// The calls of the work, which no set-up may change.
Lines workOf(const Export& one, Job& job) {
    const HWND window = job.system.desktop.add("any", "any", {7}).handle;
    job.system.calls.clear();
    EXPECT_EQ(one.call(job, window), one.result) << one.name;
    return callLines(job.system);
}

using CheckLog = std::function<void(const Lines& lines, const OsRelease& os)>;

void expectNoLog(const Lines& lines, const OsRelease&) {
    EXPECT_EQ(lines, Lines());
}

void expectSomeLog(const Lines& lines, const OsRelease&) {
    EXPECT_GE(lines.size(), 3u);
}

// Nothing but critical records, of which the file of the first call is the log's own.
CheckLog criticalRecords(const std::string& error) {
    return [error](const Lines& lines, const OsRelease&) {
        EXPECT_GE(lines.size(), 3u);
        for (const std::string& line : lines) {
            EXPECT_EQ(line,
                      "XFilesLogger::CreateInstance() RegistryKey64() exception error=" + error);
        }
    };
}

// Every export works as ever on a machine with such a damage.
void expectWorkGoesOn(const std::function<void(System&)>& damage, const CheckLog& checkLog) {
    for (const OsRelease& os : {os::win98, os::nt40, os::winXp, os::win10}) {
        for (const Export& one : exports()) {
            SCOPED_TRACE(std::string(os.name) + " " + one.name);
            Lines expected;
            {
                Job whole(os);
                expected = workOf(one, whole);
            }
            Job job(os);
            damage(job.system);
            EXPECT_EQ(workOf(one, job), expected);
            checkLog(job.system.logLines(), os);
            EXPECT_EQ(job.system.complaints, Lines());
        }
    }
}

TEST(Frame, TraceBeginsTheLogUnderTheExportsName) {
    for (const OsRelease& os : os::all) {
        for (const Export& one : exports()) {
            SCOPED_TRACE(std::string(os.name) + " " + one.name);
            Job job(os);
            workOf(one, job);
            const Lines lines = job.newLines();
            ASSERT_GE(lines.size(), 3u);
            EXPECT_EQ(Lines(lines.begin(), lines.begin() + 2), traceOf(one.name));
        }
    }
}

TEST(Frame, LoggingChangesNoCallOfTheWork) {
    for (const OsRelease& os : os::all) {
        for (const Export& one : exports()) {
            SCOPED_TRACE(std::string(os.name) + " " + one.name);
            Lines logged;
            {
                Job job(os);
                logged = workOf(one, job);
            }
            Job job(os, Log::off);
            EXPECT_EQ(workOf(one, job), logged);
        }
    }
}

TEST(Frame, LogSwitchedOff) {
    expectWorkGoesOn(
        [](System& system) { system.registry.setNumber(system.loggerKey(), "startLog", 0); },
        expectNoLog);
}

TEST(Frame, NoConfigurationLibrary) {
    expectWorkGoesOn([](System& system) { system.modules.config.inSearchPath = false; },
                     expectNoLog);
}

TEST(Frame, ConfigurationLibraryFromTheDriverDirectory) {
    expectWorkGoesOn(
        [](System& system) {
            system.modules.config.inSearchPath = false;
            system.modules.config.inDriverDirectory = true;
        },
        expectSomeLog);
}

TEST(Frame, ConfigurationLibraryWithoutItsExport) {
    expectWorkGoesOn([](System& system) { system.modules.config.hasExport = false; }, expectNoLog);
}

TEST(Frame, ConfigurationLibraryThatRefuses) {
    expectWorkGoesOn([](System& system) { system.modules.config.sizingResult = 0; }, expectNoLog);
}

TEST(Frame, NoBaseKey) {
    expectWorkGoesOn([](System& system) { system.registry.removeKey(commonKey); },
                     criticalRecords("2"));
}

TEST(Frame, RegistryThatMayNotBeRead) {
    expectWorkGoesOn([](System& system) { system.registry.deny(commonKey); }, criticalRecords("5"));
}

TEST(Frame, MutexThatCannotBeMade) {
    expectWorkGoesOn(
        [](System& system) { system.faults.fail("CreateMutexA", 0, 1, Lasting::forEver); },
        expectNoLog);
}

TEST(Frame, MutexThatCannotBeWaitedFor) {
    expectWorkGoesOn(
        [](System& system) { system.faults.fail("WaitForSingleObject", 0, 1, Lasting::forEver); },
        expectNoLog);
}

// On NT everybody's SID is made for the options' keys and for the log's file.
TEST(Frame, SidThatCannotBeMade) {
    expectWorkGoesOn(
        [](System& system) {
            system.faults.fail("AllocateAndInitializeSid", 0, 1, Lasting::forEver);
        },
        [](const Lines& lines, const OsRelease& os) {
            os.is9x() ? expectSomeLog(lines, os) : expectNoLog(lines, os);
        });
}

TEST(Frame, LogFileThatCannotBeOpened) {
    expectWorkGoesOn(
        [](System& system) { system.faults.fail("CreateFileA", 1, 1, Lasting::forEver); },
        expectNoLog);
}

// A failed trace loses its records and no other: here the first record, the trace's entry.
TEST(Frame, TraceThatFailsIsDropped) {
    for (const Export& one : exports()) {
        SCOPED_TRACE(one.name);
        Lines whole;
        {
            Job job(os::winXp);
            workOf(one, job);
            whole = job.newLines();
        }
        Job job(os::winXp);
        job.system.faults.fail("WaitForSingleObject");
        workOf(one, job);
        EXPECT_EQ(job.newLines(), Lines(whole.begin() + 2, whole.end()));
    }
}

// The senders log why their own trace failed, the third record of the call.
TEST(Frame, SendersTraceThatFailsIsLogged) {
    for (const Export& one : exports()) {
        SCOPED_TRACE(one.name);
        Lines whole;
        {
            Job job(os::winXp);
            workOf(one, job);
            whole = job.newLines();
        }
        const bool isLaunch = std::string(one.name) == "VOKLaunchXFiles";
        Job job(os::winXp);
        // Of a launch the fourth: the third is no trace.
        job.system.faults.fail("WaitForSingleObject", 0, isLaunch ? 4 : 3);
        workOf(one, job);
        const Lines lines = job.newLines();
        const Lines lost = isLaunch ? Lines() : Lines{"Win32(6The handle is invalid."};
        const auto kept = isLaunch ? 3 : 2;
        EXPECT_EQ(lines, Lines(whole.begin(), whole.begin() + kept) + lost +
                             Lines(whole.begin() + kept + 2, whole.end()));
    }
}

TEST(Frame, NothingOfTheFrameStaysOpen) {
    for (const OsRelease& os : os::all) {
        for (const Export& one : exports()) {
            SCOPED_TRACE(std::string(os.name) + " " + one.name);
            Job job(os);
            workOf(one, job);
            EXPECT_EQ(job.system.handles.countOpen(Kind::key), 0u);
            EXPECT_EQ(job.system.handles.countOpen(Kind::mutex), 0u);
            EXPECT_EQ(job.system.handles.countOpen(Kind::file), 0u);
            EXPECT_EQ(job.system.sids, 0);
            EXPECT_EQ(job.system.modules.countLoaded("DEMOcfg.dll"), 0u);
        }
    }
}

TEST(Getters, ReadTheRecordAndNothingElse) {
    for (const OsRelease& os : os::all) {
        Job job(os);
        job.record.hDRAL = handleOf(Kind::pipe, 5);
        job.record.hNEMB = handleOf(Kind::window, 6);
        const VKDATA before = job.record;
        EXPECT_EQ(job.library.getDral(&job.record), handleOf(Kind::pipe, 5));
        EXPECT_EQ(job.library.getNemb(&job.record), handleOf(Kind::window, 6));
        EXPECT_EQ(job.library.getDral(nullptr), nullptr);
        EXPECT_EQ(job.library.getNemb(nullptr), nullptr);
        EXPECT_EQ(std::memcmp(&before, &job.record, sizeof before), 0);
        EXPECT_EQ(job.system.calls.lines(), Lines());
        EXPECT_EQ(job.newLines(), Lines());
    }
}

// A record at the very end of readable memory.
TEST(Getters, ReadNothingBehindTheHandles) {
    Job job(os::winXp);
    const HANDLE both[2] = {};
    const GuardedBytes handles(both, sizeof both, GuardedBytes::Use::readOnly);
    auto* record = static_cast<VKDATA*>(handles.data());
    EXPECT_EQ(job.library.getDral(record), nullptr);
    EXPECT_EQ(job.library.getNemb(record), nullptr);
}

}  // namespace
}  // namespace vok::test
