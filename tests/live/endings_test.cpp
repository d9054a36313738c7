// Every reply to the end of a job, closed and cancelled. Each DRAL that is told pauses its caller
// for a second on NT, so the jobs run beside each other.
#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "common/machine.h"
#include "live_test.h"

namespace vok::test {
namespace {

constexpr std::array<LONG, 5> repliesInTurn{NOPRINT, YESPRINT, WAITPRINT, 7, -1};

class LiveEndingsTest : public LiveRouteTest {
  protected:
    void SetUp() override {
        LiveRouteTest::SetUp();
        InitializeCriticalSection(&lock_);
    }
    void TearDown() override {
        LiveRouteTest::TearDown();
        DeleteCriticalSection(&lock_);
    }

    /// Opens a job and ends it. Which of the replies it gets is a matter of who comes first.
    void endJob(DWORD event, DWORD number);
    void endDral(LiveJob& job, DWORD event);
    void endNemb(LiveJob& job, DWORD event);

    /// All jobs with that end, as many at once as a printer can have.
    void endJobs(DWORD event, DWORD firstNumber);

    /// The 9x library asks again by itself for as long as DRAL wants to be waited for.
    static DWORD jobs() { return sample::is9x() ? repliesInTurn.size() - 1 : repliesInTurn.size(); }

    void note(std::vector<LONG>& replies, LONG reply) {
        EnterCriticalSection(&lock_);
        replies.push_back(reply);
        LeaveCriticalSection(&lock_);
    }

    std::string printer_;
    CRITICAL_SECTION lock_{};
    std::vector<LONG> dral_;
    std::vector<LONG> nemb_;
};

void LiveEndingsTest::endDral(LiveJob& job, DWORD event) {
    const StopWatch watch;
    const LONG reply = job.dral(event);
    const auto took = watch.milliseconds();
    note(dral_, reply);
    EXPECT_EQ(job.record->hDRAL == nullptr, reply != WAITPRINT);
    const bool cleared = sample::is9x() ? event == SM_CLOSEJOB
                                        : byPipe() && event == SM_CANCELJOB && reply != WAITPRINT;
    EXPECT_EQ(job.opened(), !cleared);
    if (!sample::is9x()) {
        EXPECT_GE(took, 980) << "a pause of a second";
    }
}

void LiveEndingsTest::endNemb(LiveJob& job, DWORD event) {
    const HANDLE before = job.record->hNEMB;
    job.setOpened();
    note(nemb_, job.nemb(event));
    EXPECT_EQ(job.record->hNEMB, byPipe() ? nullptr : before);
    EXPECT_EQ(job.opened(), !byPipe() || event == SM_CANCELJOB);
}

void LiveEndingsTest::endJob(DWORD event, DWORD number) {
    LiveJob job(library(), printer_, number);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    // On 9x DRAL's close takes the flag away, without which NEMB is not told.
    if (sample::is9x())
        endNemb(job, event);
    endDral(job, event);
    if (!sample::is9x())
        endNemb(job, event);
}

void LiveEndingsTest::endJobs(DWORD event, DWORD firstNumber) {
    std::vector<std::unique_ptr<Caller>> callers;
    for (DWORD index = 0; index < jobs(); ++index) {
        callers.push_back(std::make_unique<Caller>([this, event, number = firstNumber + index] {
            endJob(event, number);
            return 0;
        }));
        // Two pipes of a printer may exist at once, and the other kind of end needs one.
        if (byPipe())
            callers.clear();
    }
}

TEST_P(LiveEndingsTest, EveryReplyToCloseAndCancelComesBackAndDecidesWhatStaysOpen) {
    for (const char* companion : {"DRAL", "NEMB"}) {
        script(companion, "CLOSEJOB", "0,1,2,7,-1");
        script(companion, "CANCELJOB", "0,1,2,7,-1");
    }
    printer_ = machine().addPrinter("Endings");
    ASSERT_TRUE(LiveJob(library(), printer_, 100).reach());
    ASSERT_TRUE(waitForWindows(printer_));
    {
        Caller cancelled([&] {
            endJobs(SM_CANCELJOB, 50);
            return 0;
        });
        endJobs(SM_CLOSEJOB, 1);
    }
    std::vector<LONG> dral;
    std::vector<LONG> nemb;
    for (int end = 0; end < 2; ++end) {
        for (const LONG reply : repliesInTurn) {
            if (!sample::is9x() || reply != WAITPRINT)
                dral.push_back(reply);
            if (!sample::is9x() || reply != -1)
                nemb.push_back(fromNemb(reply));
        }
    }
    EXPECT_THAT(dral_, testing::UnorderedElementsAreArray(dral));
    EXPECT_THAT(nemb_, testing::UnorderedElementsAreArray(nemb));

    // Each of the jobs by both companions, once; 9x DRAL was asked once more for each end.
    std::size_t ends = 0;
    for (const std::string& line : account())
        ends += line.find("CLOSEJOB") != std::string::npos ||
                line.find("CANCELJOB") != std::string::npos;
    EXPECT_EQ(ends, 4 * jobs() + (sample::is9x() ? 2U : 0U));
    if (sample::is9x())
        expectLogged({"Inside CLOSE JOB loop", "CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000",
                      "Inside CLOSE JOB loop"});
    else if (byPipe())
        expectLogged({"We did not get WAITPRINT in CLOSEJOB...Close PIPE",
                      "CLOSEJOB WriteDralPipe rc = WAITPRINT", "Sleep 1000 ",
                      "CLOSEJOB WriteDralPipe rc = -1"});
    else
        expectLogged({"CLOSEJOB SendMessage rc = NOPRINT",
                      "Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB",
                      "Sleep 1000"});
}

TEST_P(LiveEndingsTest, WithoutAnOpenedJobTheCloseIsNotToldAndLetsGo) {
    printer_ = machine().addPrinter("Unopened");
    LiveJob job(library(), printer_, 1);
    ASSERT_TRUE(job.reach());
    EXPECT_EQ(job.nemb(SM_CLOSEJOB), YESPRINT);
    EXPECT_EQ(job.dral(SM_CLOSEJOB), YESPRINT);
    EXPECT_EQ(job.record->hDRAL, nullptr);
    EXPECT_EQ(job.record->hNEMB == nullptr, byPipe());
    EXPECT_TRUE(account().empty());
}

INSTANTIATE_TEST_SUITE_P(By, LiveEndingsTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

}  // namespace
}  // namespace vok::test
