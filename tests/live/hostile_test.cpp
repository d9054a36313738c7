// Companions, neighbours and configuration libraries that break every promise: no call crashes,
// none waits for longer than what it waits for is there, and the next job is served as ever.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "common/settings.h"
#include "live_test.h"
#include "neighbour.h"

namespace vok::test {
namespace {

using testing::Contains;
using testing::EndsWith;

class LiveHostileTest : public LiveRouteTest {};

TEST_P(LiveHostileTest, ACompanionThatDiesOnEachEventIsAnsweredForEachTime) {
    const std::string printer = machine().addPrinter("Dying");
    DWORD number = 0;
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB, SM_CANCELJOB}) {
        const std::string name = sample::eventName(event);
        script("DRAL", name.c_str(), "die");
        script("NEMB", name.c_str(), "die");
        LiveJob job(library(), printer, ++number);
        ASSERT_TRUE(job.reach());
        if (event != SM_OPENJOB) {
            ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT) << name;
            ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT) << name;
        }
        EXPECT_EQ(job.dral(event), NOPRINT) << name;
        job.setOpened();
        EXPECT_EQ(job.nemb(event), fromNemb(NOPRINT)) << name;
        ASSERT_TRUE(waitFor([&] {
            return machine().companions("DRAL").empty() && machine().companions("NEMB").empty();
        }));
        script("DRAL", name.c_str(), "1");
        script("NEMB", name.c_str(), "1");
    }
    LiveJob last(library(), printer, ++number);
    ASSERT_TRUE(last.reach());
    EXPECT_EQ(last.dral(SM_OPENJOB), YESPRINT);
}

TEST_P(LiveHostileTest, ALogThatIsHeldWithoutSharingLosesItsLinesAndNothingElse) {
    const std::string printer = machine().addPrinter("Held log");
    LiveJob job(library(), printer, 1);
    {
        Neighbour neighbour("file", machine().logPath());
        ASSERT_TRUE(neighbour.holds());
        ASSERT_TRUE(job.reach());
        EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT);
        EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    }
    EXPECT_TRUE(readLines(machine().logPath()).empty());
    EXPECT_EQ(job.dral(SM_STARTPAGE), YESPRINT);
    EXPECT_THAT(readLines(machine().logPath()), Contains(EndsWith(" +VOKSendDralMsg")));
    EXPECT_THAT(readLines(machine().logPath()), Contains(EndsWith("rc = YESPRINT")));
}

TEST_P(LiveHostileTest, TheLogsMutexHoldsCallsUntilItsOwnerDiesWithIt) {
    const std::string printer = machine().addPrinter("Held mutex");
    LiveJob job(library(), printer, 1);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    const std::size_t before = readLines(machine().logPath()).size();
    Neighbour neighbour("mutex", "ZELOG_" + livePrefix() + "Vok.log");
    ASSERT_TRUE(neighbour.holds());
    Caller held([&] { return job.dral(SM_STARTPAGE); });
    Sleep(200);
    EXPECT_FALSE(held.done());
    EXPECT_EQ(readLines(machine().logPath()).size(), before);
    neighbour.die();
    ASSERT_TRUE(held.join());
    EXPECT_EQ(held.result(), YESPRINT);
    // The line that waited is there too.
    const std::vector<std::string> lines = readLines(machine().logPath());
    ASSERT_GT(lines.size(), before);
    EXPECT_THAT(lines[before], EndsWith(" +VOKSendDralMsg"));
    EXPECT_THAT(lines.back(), EndsWith(" rc = YESPRINT"));
}

INSTANTIATE_TEST_SUITE_P(By, LiveHostileTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

class LiveHostilePipeTest : public LiveTest {
  protected:
    void hostileCompanions(const std::string& how) {
        for (const char* name : {"DRAL", "NEMB"}) {
            machine().replace(name, "live_hostile_companion.exe");
            script(name, "Hostile", how);
        }
    }
};

TEST_F(LiveHostilePipeTest, AFloodedPipeIsReadFourBytesAtATime) {
    hostileCompanions("flood");
    const std::string printer = machine().addPrinter("Flood");
    for (DWORD number = 1; number <= 2; ++number) {
        LiveJob job(library(Route::Pipe), printer, number);
        ASSERT_TRUE(job.reach());
        EXPECT_EQ(job.dral(SM_OPENJOB), 7);
        EXPECT_EQ(job.nemb(SM_OPENJOB), 7);
        for (job.page = 1; job.page < 50; ++job.page) {
            EXPECT_EQ(job.dral(SM_STARTPAGE), 7);
            EXPECT_EQ(job.nemb(SM_STARTPAGE), YESPRINT);
        }
        EXPECT_EQ(job.dral(SM_CLOSEJOB), 7);
        EXPECT_EQ(job.nemb(SM_CLOSEJOB), YESPRINT);
        EXPECT_EQ(job.record->hDRAL, nullptr);
        EXPECT_EQ(job.record->hNEMB, nullptr);
    }
}

TEST_F(LiveHostilePipeTest, ASecondConnectionIsRefusedAndTheFirstServes) {
    hostileCompanions("twice");
    LiveJob job(library(Route::Pipe), machine().addPrinter("Twice"), 1);
    ASSERT_TRUE(job.reach());
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CANCELJOB}) {
        EXPECT_EQ(job.dral(event), YESPRINT);
        EXPECT_EQ(job.nemb(event), YESPRINT);
    }
    EXPECT_THAT(readLines(machine().tracePath()),
                Contains(EndsWith("the second connection: error 231")).Times(2));
}

TEST_F(LiveHostilePipeTest, ANembWithoutAWindowIsKnownByItsMutex) {
    script("NEMB", "STARTUP", "never");
    const std::string printer = machine().addPrinter("Windowless");
    LiveJob first(library(Route::Pipe), printer, 1);
    ASSERT_EQ(first.launch(), TRUE);
    const std::string mutex = VOK_MUTEX_PREFIX + livePrefix() + VOK_NEMB_TITLE + printer;
    const auto running = [&] {
        std::string name = mutex;
        CharUpperBuffA(name.data() + sizeof VOK_MUTEX_PREFIX - 1,
                       static_cast<DWORD>(name.size() - (sizeof VOK_MUTEX_PREFIX - 1)));
        const HANDLE held = OpenMutexA(SYNCHRONIZE, FALSE, name.c_str());
        if (held != nullptr)
            CloseHandle(held);
        return held != nullptr;
    };
    ASSERT_TRUE(waitFor(running));
    expectNotLogged("Nemb is already running");
    LiveJob second(library(Route::Pipe), printer, 2);
    EXPECT_EQ(second.launch(), TRUE);
    expectLogged({"Nemb is already running", "Nemb is already running! Create Pipe regardless"});
    EXPECT_EQ(machine().companions("NEMB").size(), 1U);
}

TEST_F(LiveHostilePipeTest, APipeNameThatIsTakenNeverStopsPrinting) {
    const std::string printer = machine().addPrinter("Taken");
    Neighbour neighbour("pipe", VOK_DRAL_PIPE + printer);
    ASSERT_TRUE(neighbour.holds());
    LiveJob job(library(Route::Pipe), printer, 1);
    EXPECT_EQ(job.launch(), TRUE);
    EXPECT_EQ(job.record->hDRAL, INVALID_HANDLE_VALUE);
    EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.dral(SM_STARTPAGE), NOPRINT);
    EXPECT_EQ(job.dral(SM_CANCELJOB), YESPRINT);
    EXPECT_EQ(job.record->hDRAL, nullptr);
    expectLogged({"Return from StartDRALXP Pipes. Dral HPIPE = 0xFFFFFFFFFFFFFFFF",
                  "ConnectNamedPipe failed! GetLastError = 6rc = YESPRINT",
                  "ConnectNamedPipe failed! GetLastError = 6rc = YESPRINT"});
}

class LiveHostileConfigTest : public LiveTest {
  protected:
    /// A job with a configuration library that breaks its contract so, telling this path.
    void printWith(const char* how, const std::string& path) {
        SetEnvironmentVariableA("VOK_HOSTILE_CONFIG", how);
        SetEnvironmentVariableA("VOK_HOSTILE_PATH", path.c_str());
        machine().replace("cfg", "live_hostile_config.dll");
        LiveJob job(library(Route::Message), machine().addPrinter("Config"), 1);
        ASSERT_TRUE(job.reach());
        EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT);
        EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
        EXPECT_EQ(job.nemb(SM_STARTPAGE), YESPRINT);
    }
};

TEST_F(LiveHostileConfigTest, RefusedItsPathNothingIsLoggedAndTheJobGoesOn) {
    printWith("refuses", sample::baseKey());
    EXPECT_TRUE(readLines(machine().logPath()).empty());
}

TEST_F(LiveHostileConfigTest, ItsPathIsTakenWhateverSizeItTells) {
    for (const char* how : {"empty", "huge", "small"}) {
        printWith(how, sample::baseKey());
        EXPECT_FALSE(readLines(machine().logPath()).empty()) << how;
        DeleteFileA(machine().logPath().c_str());
    }
}

TEST_F(LiveHostileConfigTest, APathThatIsNoPathLeavesTheLogToTheCriticalRecords) {
    printWith("unended", sample::baseKey());
    const std::vector<std::string> lines = readLines(machine().logPath());
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_NE(line.find(" RegistryKey64() exception error="), std::string::npos) << line;
}

}  // namespace
}  // namespace vok::test
