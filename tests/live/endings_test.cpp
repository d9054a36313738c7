// Every reply to the end of a job, closed and cancelled. Each DRAL that is told pauses its caller
// for a second on NT, so jobs that close and jobs that are cancelled run beside each other.
#include <gmock/gmock.h>

#include <array>

#include "common/machine.h"
#include "live_test.h"

namespace vok::test {
namespace {

constexpr std::array<LONG, 5> replies{NOPRINT, YESPRINT, WAITPRINT, 7, -1};
constexpr char all_replies[] = "0,1,2,7,-1";

class LiveEndingsTest : public LiveRouteTest {
  protected:
    /// Opens a job, ends it with the event and checks the replies, which come in their order.
    void endJob(DWORD event, DWORD number, std::size_t index);

    /// The 9x library asks again by itself for as long as DRAL wants to be waited for.
    static LONG dralReply(std::size_t index) {
        return sample::is9x() && index >= 2 ? replies[index + 1] : replies[index];
    }
    static std::size_t jobs() { return sample::is9x() ? replies.size() - 1 : replies.size(); }

    void expectDralLeft(LiveJob& job, DWORD event, LONG reply);
    std::string printer_;
};

void LiveEndingsTest::expectDralLeft(LiveJob& job, DWORD event, LONG reply) {
    EXPECT_EQ(job.record->hDRAL == nullptr, reply != WAITPRINT);
    const bool cleared = sample::is9x() ? event == SM_CLOSEJOB
                                        : byPipe() && event == SM_CANCELJOB && reply != WAITPRINT;
    EXPECT_EQ(job.opened(), !cleared);
}

void LiveEndingsTest::endJob(DWORD event, DWORD number, std::size_t index) {
    LiveJob job(library(), printer_, number);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    const HANDLE nemb = job.record->hNEMB;
    // On 9x DRAL's close takes the flag away, without which NEMB is not told.
    if (sample::is9x()) {
        EXPECT_EQ(job.nemb(event), replies[index]);
    }
    const DWORD start = GetTickCount();
    const LONG reply = job.dral(event);
    const DWORD took = GetTickCount() - start;
    EXPECT_EQ(reply, dralReply(index));
    if (!sample::is9x() || index == 2) {
        EXPECT_GE(took, 980U);
    }
    expectDralLeft(job, event, reply);
    if (sample::is9x())
        return;
    job.setOpened();
    EXPECT_EQ(job.nemb(event), fromNemb(replies[index]));
    EXPECT_EQ(job.record->hNEMB, byPipe() ? nullptr : nemb);
    EXPECT_EQ(job.opened(), !byPipe() || event == SM_CANCELJOB);
}

TEST_P(LiveEndingsTest, EveryReplyToCloseAndCancelComesBackAndDecidesWhatStaysOpen) {
    for (const char* companion : {"DRAL", "NEMB"}) {
        script(companion, "CLOSEJOB", all_replies);
        script(companion, "CANCELJOB", all_replies);
    }
    printer_ = machine().addPrinter("Endings");
    ASSERT_TRUE(LiveJob(library(), printer_, 100).reach());
    Caller cancelled([&] {
        for (std::size_t index = 0; index < jobs(); ++index)
            endJob(SM_CANCELJOB, static_cast<DWORD>(50 + index), index);
        return 0;
    });
    for (std::size_t index = 0; index < jobs(); ++index)
        endJob(SM_CLOSEJOB, static_cast<DWORD>(1 + index), index);
    ASSERT_TRUE(cancelled.join());

    // Each of the jobs by both companions, once; 9x DRAL was asked once more for each end.
    std::size_t ends = 0;
    for (const std::string& line : account())
        ends += line.find("CLOSEJOB") != std::string::npos ||
                line.find("CANCELJOB") != std::string::npos;
    EXPECT_EQ(ends, 4 * jobs() + (sample::is9x() ? 2U : 0U));
    if (sample::is9x())
        expectLogged({"Inside CLOSE JOB loop", "CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000",
                      "CLOSEJOB SendMessage rc = -1"});
    else if (byPipe())
        expectLogged({"We did not get WAITPRINT in CLOSEJOB...Close PIPE",
                      "CLOSEJOB WriteDralPipe rc = WAITPRINT", "Sleep 1000 ",
                      "CLOSEJOB WriteDralPipe rc = -1"});
    else
        expectLogged({"Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB",
                      "CLOSEJOB SendMessage rc = WAITPRINT", "Sleep 1000",
                      "CLOSEJOB SendMessage rc = -1"});
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
