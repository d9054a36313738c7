// Every reply to the opening of a job and to its pages, by both companions: what comes back, what
// the record and the log say, and what the companions were told.
#include <gmock/gmock.h>

#include <array>
#include <string>
#include <vector>

#include "common/agreement.h"
#include "common/machine.h"
#include "live_test.h"

namespace vok::test {
namespace {

constexpr std::array<LONG, 5> replies{NOPRINT, YESPRINT, WAITPRINT, 7, -1};
constexpr char allReplies[] = "0,1,2,7,-1";

class LiveRepliesTest : public LiveRouteTest {
  protected:
    void SetUp() override {
        LiveRouteTest::SetUp();
        if (!HasFatalFailure())
            printer_ = machine().addPrinter("Replies");
    }

    /// What an exchange is called in the log.
    std::string exchange(const char* event, const char* companion) const {
        if (byPipe())
            return std::string(event) + " Write" + companion + "Pipe";
        return std::string(event) + " SendMessage";
    }

    [[nodiscard]] std::string toldHere(const char* who, const char* event, DWORD job, DWORD page,
                                       LONG reply) const {
        return told(who, event, GetParam(), job, page, reply);
    }

    std::string printer_;
};

TEST_P(LiveRepliesTest, TheReplyToTheOpeningComesBackAndOnlyYesOpensByMessage) {
    script("DRAL", "OPENJOB", allReplies);
    script("NEMB", "OPENJOB", allReplies);
    std::vector<std::string> expected;
    DWORD number = 0;
    for (const LONG reply : replies) {
        LiveJob job(library(), printer_, ++number);
        ASSERT_TRUE(job.reach());
        EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT) << "not told before DRAL has opened";
        EXPECT_EQ(job.dral(SM_OPENJOB), reply);
        EXPECT_EQ(job.opened(), byPipe() || reply == YESPRINT);
        job.setOpened();
        EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT) << "not told twice";
        EXPECT_EQ(job.nemb(SM_OPENJOB), reply);
        expected.push_back(toldHere("DRAL", "OPENJOB", number, 0, reply));
        expected.push_back(toldHere("NEMB", "OPENJOB", number, 0, reply));
        const char* dot = byPipe() ? ". rc = " : " rc = ";
        expectLogged({"OPENJOB flag was NOT set in epDoc. rc = YESPRINT",
                      exchange("OPENJOB", "Dral") + dot + sample::replyName(reply),
                      "OPENJOB flag was NOT set in epDoc. rc = YESPRINT",
                      exchange("OPENJOB", "Nemb") + " rc = " + sample::replyName(reply)});
    }
    EXPECT_EQ(account(), expected);
}

TEST_P(LiveRepliesTest, ThePagesGoToBothAndTheirRepliesComeBack) {
    script("DRAL", "STARTPAGE", allReplies);
    script("NEMB", "STARTPAGE", allReplies);
    script("NEMB", "ENDPAGE", allReplies);
    LiveJob job(library(), printer_, 4);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    std::vector<std::string> expected{toldHere("DRAL", "OPENJOB", 4, 0, 1),
                                      toldHere("NEMB", "OPENJOB", 4, 0, 1)};
    for (const LONG reply : replies) {
        ++job.page;
        EXPECT_EQ(job.dral(SM_STARTPAGE), reply);
        EXPECT_EQ(job.nemb(SM_STARTPAGE), fromNemb(reply));
        EXPECT_EQ(job.nemb(sample::SM_ENDPAGE), fromNemb(reply));
        EXPECT_EQ(job.dral(sample::SM_ENDPAGE), YESPRINT) << "never sent to DRAL";
        expected.push_back(toldHere("DRAL", "STARTPAGE", 4, job.page, reply));
        expected.push_back(toldHere("NEMB", "STARTPAGE", 4, job.page, reply));
        expected.push_back(toldHere("NEMB", "ENDPAGE", 4, job.page, reply));
    }
    EXPECT_EQ(account(), expected);
    expectLogged({"STARTPAGE/ENDPAGE " + std::string(sample::is9x() ? "default. " : "") +
                      exchange("", "Nemb").substr(1) + " rc = -1",
                  "The Message Id = 1136"});
}

TEST_P(LiveRepliesTest, EveryByteOfTheBlocksArrives) {
    for (const char* event : {"STARTPAGE", "OPENJOB"}) {
        script("DRAL", event, "sum");
        script("NEMB", event, "sum");
    }
    for (DWORD number = 1; number <= 3; ++number) {
        LiveJob job(library(), printer_, number);
        ASSERT_TRUE(job.reach());
        LONG reply = job.dral(SM_OPENJOB);
        EXPECT_EQ(reply, job.sum());
        job.setOpened();
        reply = job.nemb(SM_OPENJOB);
        EXPECT_EQ(reply, job.sum());
        reply = job.dral(SM_STARTPAGE);
        EXPECT_EQ(reply, job.sum());
        reply = job.nemb(SM_STARTPAGE);
        EXPECT_EQ(reply, fromNemb(job.sum()));
        EXPECT_EQ(account().back(), toldHere("NEMB", "STARTPAGE", number, 0, job.sum()));
    }
}

TEST_P(LiveRepliesTest, ALateReplyIsWaitedFor) {
    script("DRAL", "OPENJOB", "late:300:7");
    script("NEMB", "STARTPAGE", "late:300:2");
    LiveJob job(library(), printer_, 1);
    ASSERT_TRUE(job.reach());
    const StopWatch watch;
    EXPECT_EQ(job.dral(SM_OPENJOB), 7);
    job.setOpened();
    EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.nemb(SM_STARTPAGE), fromNemb(WAITPRINT));
    EXPECT_GE(watch.milliseconds(), 560);
}

TEST_P(LiveRepliesTest, ACompanionThatDiesIsAnsweredForAndStartedAgain) {
    script("DRAL", "OPENJOB", "die");
    script("NEMB", "OPENJOB", "die");
    LiveJob job(library(), printer_, 1);
    ASSERT_TRUE(job.reach());
    const std::vector<DWORD> first = machine().companions("DRAL");
    EXPECT_EQ(job.dral(SM_OPENJOB), NOPRINT);
    EXPECT_EQ(job.opened(), byPipe());
    job.setOpened();
    EXPECT_EQ(job.nemb(SM_OPENJOB), fromNemb(NOPRINT));
    ASSERT_TRUE(waitFor([&] {
        return machine().companions("DRAL").empty() && machine().companions("NEMB").empty();
    }));
    script("DRAL", "OPENJOB", "1");
    script("NEMB", "OPENJOB", "1");
    LiveJob next(library(), printer_, 2);
    ASSERT_TRUE(next.reach());
    EXPECT_EQ(next.dral(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(next.nemb(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(machine().companions("DRAL").size(), 1U);
    EXPECT_NE(machine().companions("DRAL"), first);
}

TEST_P(LiveRepliesTest, TooFewBytesInThePipeReplaceTheLowOnesOnly) {
    constexpr LONG whole = 0x01020304;
    const std::string shorter = "short:3:16909060,short:2:16909060,short:1:16909060,short:0";
    script("DRAL", "STARTPAGE", shorter);
    script("NEMB", "OPENJOB", shorter);
    LiveJob job(library(), printer_, 1);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    for (const LONG few : {0x020304L, 0x0304L, 0x04L}) {
        EXPECT_EQ(job.nemb(SM_OPENJOB), byPipe() ? few : whole);
        EXPECT_EQ(job.dral(SM_STARTPAGE), byPipe() ? few : whole);
    }
    // A companion that hangs up: what each side's answer was before.
    EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.dral(SM_STARTPAGE), byPipe() ? NOPRINT : YESPRINT);
}

TEST_P(LiveRepliesTest, ACompanionThatNeverAnswersHoldsTheCallForAsLongAsItLives) {
    script("DRAL", "STARTPAGE", "never");
    LiveJob job(library(), printer_, 1);
    ASSERT_TRUE(job.reach());
    ASSERT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    ASSERT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    LiveJob other(library(), printer_, 2);
    ASSERT_TRUE(other.reach());
    Caller held([&] { return job.dral(SM_STARTPAGE); });
    ASSERT_TRUE(
        waitFor([&] { return !account().empty() && account().back().ends_with("never answers"); }));
    // Another job's events to the other companion are not held.
    EXPECT_EQ(other.nemb(sample::SM_ENDPAGE), YESPRINT);
    EXPECT_FALSE(held.done());
    machine().endCompanions();
    ASSERT_TRUE(held.join());
    EXPECT_EQ(held.result(), NOPRINT);
}

INSTANTIATE_TEST_SUITE_P(By, LiveRepliesTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

}  // namespace
}  // namespace vok::test
