// A launch among real processes: cold it starts each companion once, warm it finds them again.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "common/machine.h"
#include "live_test.h"

namespace vok::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class LiveLaunchTest : public LiveRouteTest {
  protected:
    /// What the companions of that name say they were started with.
    std::vector<std::string> starts(const std::string& companion) {
        std::vector<std::string> lines;
        for (const std::string& line : readLines(machine().tracePath())) {
            if (line.find(" " + companion + "[") != std::string::npos &&
                line.find("] started: ") != std::string::npos)
                lines.push_back(line);
        }
        return lines;
    }

    DWORD mode() const {
        if (sample::is9x())
            return VOK_MODE_NONE;
        return byPipe() ? VOK_MODE_PIPE : VOK_MODE_WINDOW;
    }

    void expectReached(LiveJob& job) {
        EXPECT_EQ(job.record->dralMode, mode());
        EXPECT_EQ(job.record->nembMode, mode());
        EXPECT_EQ(job.opened(), false);
        if (byPipe()) {
            EXPECT_EQ(GetFileType(job.record->hDRAL), static_cast<DWORD>(FILE_TYPE_PIPE));
            EXPECT_EQ(GetFileType(job.record->hNEMB), static_cast<DWORD>(FILE_TYPE_PIPE));
        } else {
            EXPECT_TRUE(IsWindow(static_cast<HWND>(job.record->hDRAL)));
            EXPECT_TRUE(IsWindow(static_cast<HWND>(job.record->hNEMB)));
        }
    }
};

TEST_P(LiveLaunchTest, ColdItStartsEachCompanionOnceAndWarmItFindsThemAgain) {
    const std::string printer = machine().addPrinter("Launch");
    LiveJob first(library(), printer, 1);
    ASSERT_TRUE(first.reach());
    expectReached(first);
    ASSERT_EQ(machine().companions("DRAL").size(), 1U);
    ASSERT_EQ(machine().companions("NEMB").size(), 1U);
    const DWORD dral = machine().companions("DRAL")[0];
    const DWORD nemb = machine().companions("NEMB")[0];
    ASSERT_TRUE(waitForWindows(printer));
    ASSERT_EQ(starts("DRAL").size(), 1U);
    ASSERT_EQ(starts("NEMB").size(), 1U);
    EXPECT_THAT(starts("DRAL")[0], EndsWith(" SPLPP /F=" + printer));
    EXPECT_THAT(starts("NEMB")[0], EndsWith(" SPLPP /F=" + printer + " /J=1"));

    LiveJob second(library(), printer, 2);
    EXPECT_EQ(second.launch(), TRUE);
    expectReached(second);
    EXPECT_EQ(machine().companions("DRAL"), std::vector{dral});
    EXPECT_EQ(machine().companions("NEMB"), std::vector{nemb});
    EXPECT_EQ(starts("DRAL").size() + starts("NEMB").size(), 2U);
    EXPECT_EQ(second.record->hDRALProc, nullptr);
    EXPECT_EQ(second.record->hNEMBProc, nullptr);
}

TEST_P(LiveLaunchTest, TheLogTellsHowEachCompanionWasReached) {
    const std::string printer = machine().addPrinter("Launch log");
    LiveJob cold(library(), printer, 1);
    ASSERT_TRUE(cold.reach());
    const std::string head = "FriendlyName = " + printer + ", PortName = LPT1:";
    if (sample::is9x()) {
        expectLogged({head, "Searching Dral Title = DRAL - " + printer,
                      "hDRAL = ", "The Cmd Line =  SPLPP /F=" + printer,
                      "hNEMB =  ", "Launching Nmeb, Path =  SPLPP /F=" + printer + " /J=1"});
        expectNotLogged("Launching Dlar");
    } else if (byPipe()) {
        expectLogged({head, "Using Pipes in StartDral", livePrefix() + "DRAL - " + printer,
                      "DRAL.EXE SPLPP /F=" + printer,
                      "Return from StartDRALXP Pipes. Dral HPIPE = " + logged(cold.record->hDRAL),
                      "Using Pipes in StartNembXP", livePrefix() + "NEMB - " + printer,
                      "NEMB.EXE SPLPP /F=" + printer + " /J=1",
                      "Nemb HPIPE from CreateNamedPipe = " + logged(cold.record->hNEMB)});
    } else {
        expectLogged({head, "Using Messages in StartDRALXP", "DRAL.EXE SPLPP /F=" + printer,
                      "Using Messages in StartNembXP"});
    }
    ASSERT_TRUE(waitForWindows(printer));
    LiveJob warm(library(), printer, 2);
    ASSERT_EQ(warm.launch(), TRUE);
    if (byPipe())
        expectLogged({"The DRAL is already running",
                      "Nemb is already running! Create Pipe regardless",
                      "Nemb HPIPE from CreateNamedPipe = " + logged(warm.record->hNEMB)});
    else if (sample::is9x())
        expectLogged(
            {"hDRAL = " + logged(warm.record->hDRAL), "hNEMB =  " + logged(warm.record->hNEMB)});
    EXPECT_THAT(readLines(machine().logPath()).back(),
                HasSubstr(" rc = TRUE from VOKLaunchXFiles StartJobTime="));
}

TEST_P(LiveLaunchTest, ACompanionThatComesUpLateIsReachedInTheEnd) {
    script("DRAL", "STARTUP", "late:1200");
    script("NEMB", "STARTUP", "late:300");
    const std::string printer = machine().addPrinter("Late");
    LiveJob job(library(), printer, 1);
    ASSERT_TRUE(job.reach());
    expectReached(job);
    EXPECT_EQ(job.dral(SM_STARTPAGE), byPipe() ? NOPRINT : YESPRINT);
}

TEST_P(LiveLaunchTest, APrinterThatIsNotThereStopsTheLaunch) {
    LiveJob job(library(), livePrefix() + " Nowhere", 1);
    EXPECT_EQ(job.launch(), FALSE);
    EXPECT_EQ(job.record->hDRAL, nullptr);
    EXPECT_EQ(job.record->hNEMB, nullptr);
    EXPECT_TRUE(machine().companions("DRAL").empty());
    EXPECT_TRUE(machine().companions("NEMB").empty());
    expectLogged({"Could not open the Printer. Exiting now...", "rc = FALSE from VOKLaunchXFiles"});
}

INSTANTIATE_TEST_SUITE_P(By, LiveLaunchTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

class LiveWindowTest : public LiveTest {};

TEST_F(LiveWindowTest, ACompanionWithoutAWindowRefusesOnNtAndIsPassedOverOn9x) {
    script("DRAL", "STARTUP", "never");
    script("NEMB", "STARTUP", "never");
    LiveJob job(library(Route::Message), machine().addPrinter("Windowless"), 1);
    EXPECT_EQ(job.launch(), FALSE);
    const LONG answer = sample::is9x() ? YESPRINT : NOPRINT;
    EXPECT_EQ(job.dral(SM_OPENJOB), answer);
    EXPECT_EQ(job.nemb(SM_STARTPAGE), answer);
    if (sample::is9x())
        expectLogged({"FindWindow attempts = 200", "rc = FALSE from VOKLaunchXFiles",
                      "VokData is Null. rc = YESPRINT", "VokData is Null. rc = YESPRINT"});
    else
        expectLogged({"rc = FALSE from VOKLaunchXFiles", "Null Window Handle in SendDralMsgXP",
                      "Null Dral Handle, No Messages can be send",
                      "Null Window Handle in SendNembMsg", "Null Nemb Window Handle"});
    EXPECT_EQ(machine().companions("DRAL").size(), 1U);
}

}  // namespace
}  // namespace vok::test
