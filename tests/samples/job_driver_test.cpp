#include "job/job_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace vok::sample {
namespace {

using Lines = std::vector<std::string>;

/// A library whose answers are scripted; the last one is repeated, and none means YESPRINT. The
/// exports are plain functions, so there is one of it, made anew for each test.
struct FakeLibrary {
    std::vector<BOOL> launches{TRUE};
    std::size_t launched = 0;
    DWORD mode = VOK_MODE_WINDOW;
    std::map<std::string, std::vector<LONG>> replies;
    std::map<std::string, std::size_t> asked;
    Lines events;
    std::vector<DralBlock> dralBlocks;
    std::vector<NembBlock> nembBlocks;
    std::vector<DWORD> flagsAtOpen;
    std::string suffix;
    bool handlesLeftAtLaunch = false;
    /// Events at which memory runs out.
    Lines exhausting;

    LONG reply(const std::string& event) {
        events.push_back(event);
        if (std::find(exhausting.begin(), exhausting.end(), event) != exhausting.end())
            throw std::bad_alloc();
        const std::vector<LONG>& script = replies[event];
        if (script.empty())
            return YESPRINT;
        return script[std::min(asked[event]++, script.size() - 1)];
    }
};

FakeLibrary* library = nullptr;

BOOL launch(const char* /*printer*/, const char* /*port*/, VKDATA* record) {
    library->handlesLeftAtLaunch |= record->hDRAL != nullptr || record->hNEMB != nullptr;
    library->suffix = record->dralTitleSuffix;
    record->dralMode = record->nembMode = library->mode;
    record->hDRAL = GetDesktopWindow();
    const std::size_t index = std::min(library->launched++, library->launches.size() - 1);
    return library->launches[index];
}

LONG sendDral(const EventBlock* block, DWORD event, VKDATA* record) {
    DralBlock dral;
    std::memcpy(&dral, block, sizeof dral);
    library->dralBlocks.push_back(dral);
    if (event == SM_OPENJOB) {
        library->flagsAtOpen.push_back(record->epDoc);
        record->epDoc |= VOK_EPDOC_OPENJOB;
    }
    return library->reply("DRAL " + eventName(event));
}

LONG sendNemb(const EventBlock* block, DWORD event, VKDATA* /*record*/) {
    NembBlock nemb;
    std::memcpy(&nemb, block, sizeof nemb);
    library->nembBlocks.push_back(nemb);
    return library->reply("NEMB " + eventName(event));
}

class FakeHost final : public JobHost {
  public:
    std::string document = "one\ftwo\fthree";
    std::string port;
    std::size_t chunk = 5;
    int opened = 0;
    bool portFails = false;
    bool readFails = false;
    std::size_t writesThatWork = 1000;
    int cancelAfterWrites = -1;
    std::vector<DWORD> pauses;
    Lines said;

    bool read(char* buffer, DWORD size, DWORD& count) override {
        count = static_cast<DWORD>(std::min({chunk, document.size() - at_, std::size_t{size}}));
        std::memcpy(buffer, document.data() + at_, count);
        at_ += count;
        return !readFails;
    }
    bool openPort() override {
        ++opened;
        return !portFails;
    }
    bool write(std::string_view bytes) override {
        if (writes_ == writesThatWork)
            return false;
        ++writes_;
        port += bytes;
        return true;
    }
    bool cancelled() override {
        return cancelAfterWrites >= 0 && writes_ >= static_cast<std::size_t>(cancelAfterWrites);
    }
    void pause(DWORD milliseconds) override { pauses.push_back(milliseconds); }
    DWORD ticks() override { return 0; }
    void say(const std::string& text) override { said.push_back(text); }

  private:
    std::size_t at_ = 0;
    std::size_t writes_ = 0;
};

class JobDriverTest : public testing::Test {
  protected:
    void SetUp() override { library = &fake_; }
    void TearDown() override { library = nullptr; }

    JobEnd run() {
        const VokCalls calls{launch, sendDral, sendNemb};
        const JobTicket ticket{"Office", "LPT1:", "letter.txt", 12};
        return JobDriver(calls, host_, ticket, limits_).run();
    }

    FakeLibrary fake_;
    FakeHost host_;
    JobLimits limits_{4, 250, 3, 500};
};

TEST_F(JobDriverTest, TellsBothOfEveryEventAndCopiesTheDocument) {
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.events, (Lines{"DRAL OPENJOB", "NEMB OPENJOB",                      //
                                   "DRAL STARTPAGE", "NEMB STARTPAGE", "NEMB ENDPAGE",  //
                                   "DRAL STARTPAGE", "NEMB STARTPAGE", "NEMB ENDPAGE",  //
                                   "DRAL STARTPAGE", "NEMB STARTPAGE", "NEMB ENDPAGE",  //
                                   "DRAL CLOSEJOB", "NEMB CLOSEJOB"}));
    EXPECT_EQ(host_.port, host_.document);
    EXPECT_EQ(host_.opened, 1);
    EXPECT_EQ(fake_.launched, 1U);
    EXPECT_EQ(fake_.suffix, "Office");
    EXPECT_TRUE(host_.pauses.empty());
}

TEST_F(JobDriverTest, TheBlocksTellWhatHappensToWhichJob) {
    run();
    ASSERT_EQ(fake_.dralBlocks.size(), 5U);
    EXPECT_EQ(fake_.dralBlocks[0].event, static_cast<DWORD>(SM_OPENJOB));
    EXPECT_EQ(fake_.dralBlocks[0].page, 0U);
    EXPECT_EQ(fake_.dralBlocks[2].event, static_cast<DWORD>(SM_STARTPAGE));
    EXPECT_EQ(fake_.dralBlocks[2].page, 2U);
    EXPECT_EQ(fake_.dralBlocks[2].job, 12U);
    ASSERT_EQ(fake_.nembBlocks.size(), 8U);
    EXPECT_STREQ(fake_.nembBlocks[0].printer, "Office");
    EXPECT_STREQ(fake_.nembBlocks[0].document, "letter.txt");
    EXPECT_EQ(fake_.nembBlocks[6].event, SM_ENDPAGE);
    EXPECT_EQ(fake_.nembBlocks[6].page, 3U);
    EXPECT_EQ(fake_.nembBlocks[7].page, 0U);
}

TEST_F(JobDriverTest, AnEmptyDocumentHasNoPage) {
    host_.document.clear();
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.events,
              (Lines{"DRAL OPENJOB", "NEMB OPENJOB", "DRAL CLOSEJOB", "NEMB CLOSEJOB"}));
}

TEST_F(JobDriverTest, ARefusalByDralKeepsThePortUntouchedAndNembUnasked) {
    fake_.replies["DRAL OPENJOB"] = {NOPRINT};
    EXPECT_EQ(run(), JobEnd::Refused);
    EXPECT_EQ(fake_.events, (Lines{"DRAL OPENJOB", "DRAL CANCELJOB", "NEMB CANCELJOB"}));
    EXPECT_EQ(host_.opened, 0);
    EXPECT_EQ(host_.port, "");
}

TEST_F(JobDriverTest, ARefusalByNembKeepsThePortUntouched) {
    fake_.replies["NEMB OPENJOB"] = {NOPRINT};
    EXPECT_EQ(run(), JobEnd::Refused);
    EXPECT_EQ(host_.opened, 0);
    EXPECT_EQ(fake_.events.back(), "NEMB CANCELJOB");
}

TEST_F(JobDriverTest, ARefusalAtAPageStopsTheJobThere) {
    fake_.replies["DRAL STARTPAGE"] = {YESPRINT, NOPRINT};
    EXPECT_EQ(run(), JobEnd::Refused);
    EXPECT_EQ(host_.port, "one\f");
    EXPECT_EQ(fake_.events.back(), "NEMB CANCELJOB");
}

TEST_F(JobDriverTest, ABusyCompanionIsAskedAgainAfterAPause) {
    fake_.replies["NEMB OPENJOB"] = {WAITPRINT, YESPRINT};
    fake_.replies["DRAL CLOSEJOB"] = {WAITPRINT, WAITPRINT, YESPRINT};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(host_.pauses, (std::vector<DWORD>{500, 500, 500}));
    EXPECT_EQ(std::count(fake_.events.begin(), fake_.events.end(), "DRAL CLOSEJOB"), 3);
    EXPECT_EQ(host_.port, host_.document);
}

TEST_F(JobDriverTest, ToAskDralAgainTheJobCountsAsNotYetOpen) {
    fake_.replies["DRAL OPENJOB"] = {WAITPRINT, YESPRINT};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.flagsAtOpen, (std::vector<DWORD>{0, 0}));
}

TEST_F(JobDriverTest, ACompanionThatStaysBusyRefusesInTheEnd) {
    fake_.replies["DRAL OPENJOB"] = {WAITPRINT};
    EXPECT_EQ(run(), JobEnd::Refused);
    EXPECT_EQ(std::count(fake_.events.begin(), fake_.events.end(), "DRAL OPENJOB"), 3);
    EXPECT_EQ(host_.pauses.size(), 2U);
}

TEST_F(JobDriverTest, ACloseThatStaysBusyIsGivenUpAndThePrintedJobStaysPrinted) {
    fake_.replies["DRAL CLOSEJOB"] = {WAITPRINT};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(std::count(fake_.events.begin(), fake_.events.end(), "DRAL CLOSEJOB"), 3);
    EXPECT_EQ(fake_.events.back(), "NEMB CLOSEJOB");
}

TEST_F(JobDriverTest, AReplyOfTheCompanionsOwnGoesOn) {
    fake_.replies["DRAL OPENJOB"] = {7};
    fake_.replies["NEMB OPENJOB"] = {-1};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(host_.said[2], "OPENJOB: DRAL 7 (0 ms), NEMB -1 (0 ms)");
}

TEST_F(JobDriverTest, AColdStartIsAskedAgainUntilBothAreReached) {
    fake_.launches = {FALSE, FALSE, TRUE};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.launched, 3U);
    EXPECT_EQ(host_.pauses, (std::vector<DWORD>{250, 250}));
    EXPECT_FALSE(fake_.handlesLeftAtLaunch);
    EXPECT_EQ(host_.said[1],
              "launch: both reached, DRAL by message, NEMB by message, tries 3, 0 ms");
}

TEST_F(JobDriverTest, ALaunchThatNeverSucceedsIsBoundedAndTheLibrarysAnswersDecide) {
    fake_.launches = {FALSE};
    fake_.replies["DRAL OPENJOB"] = {NOPRINT};
    EXPECT_EQ(run(), JobEnd::Refused);
    EXPECT_EQ(fake_.launched, 4U);
    EXPECT_EQ(host_.opened, 0);
}

TEST_F(JobDriverTest, ADeletedJobIsCancelledTowardsBoth) {
    host_.cancelAfterWrites = 1;
    EXPECT_EQ(run(), JobEnd::Cancelled);
    EXPECT_LT(host_.port.size(), host_.document.size());
    EXPECT_EQ(fake_.events[fake_.events.size() - 2], "DRAL CANCELJOB");
    EXPECT_EQ(fake_.events.back(), "NEMB CANCELJOB");
    EXPECT_EQ(std::count(fake_.events.begin(), fake_.events.end(), "DRAL CLOSEJOB"), 0);
}

TEST_F(JobDriverTest, AJobDeletedBeforeItBeganIsNotLaunchedAndNotPrinted) {
    host_.cancelAfterWrites = 0;
    EXPECT_EQ(run(), JobEnd::Cancelled);
    EXPECT_EQ(fake_.launched, 0U);
    EXPECT_EQ(host_.opened, 0);
}

TEST_F(JobDriverTest, DeletionEndsTheWaitForABusyCompanion) {
    host_.cancelAfterWrites = 0;
    fake_.replies["DRAL OPENJOB"] = {WAITPRINT};
    EXPECT_EQ(run(), JobEnd::Cancelled);
    EXPECT_EQ(std::count(fake_.events.begin(), fake_.events.end(), "DRAL OPENJOB"), 1);
}

TEST_F(JobDriverTest, APortThatCantBeWrittenFailsTheJobAndCancelsItTowardsBoth) {
    host_.writesThatWork = 1;
    EXPECT_EQ(run(), JobEnd::Failed);
    EXPECT_EQ(fake_.events.back(), "NEMB CANCELJOB");
}

TEST_F(JobDriverTest, APortThatCantBeOpenedFailsTheJob) {
    host_.portFails = true;
    EXPECT_EQ(run(), JobEnd::Failed);
    EXPECT_EQ(host_.port, "");
}

TEST_F(JobDriverTest, ADocumentThatCantBeReadFailsTheJob) {
    host_.readFails = true;
    EXPECT_EQ(run(), JobEnd::Failed);
}

TEST_F(JobDriverTest, MemoryThatRunsOutFailsTheJobAndCancelsItTowardsBoth) {
    fake_.exhausting = {"NEMB OPENJOB"};
    EXPECT_EQ(run(), JobEnd::Failed);
    EXPECT_EQ(fake_.events,
              (Lines{"DRAL OPENJOB", "NEMB OPENJOB", "DRAL CANCELJOB", "NEMB CANCELJOB"}));
    EXPECT_EQ(host_.opened, 0);
    EXPECT_EQ(host_.said[2], "memory ran out");
    EXPECT_EQ(host_.said.back(), "job 12 failed");
}

TEST_F(JobDriverTest,
       ACloseThatMemoryRunsOutAtIsToldTheOtherCompanionAndThePrintedJobStaysPrinted) {
    fake_.exhausting = {"DRAL CLOSEJOB"};
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.events.back(), "NEMB CLOSEJOB");
    EXPECT_EQ(host_.port, host_.document);
}

TEST_F(JobDriverTest, On9xNembIsClosedFirstBecauseDralsCloseTakesTheFlag) {
    fake_.mode = VOK_MODE_NONE;
    host_.document.clear();
    EXPECT_EQ(run(), JobEnd::Printed);
    EXPECT_EQ(fake_.events,
              (Lines{"DRAL OPENJOB", "NEMB OPENJOB", "NEMB CLOSEJOB", "DRAL CLOSEJOB"}));
}

}  // namespace
}  // namespace vok::sample
