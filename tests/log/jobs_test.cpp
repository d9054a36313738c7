// What the reader makes of whole jobs.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "log_writer.h"
#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

class Jobs : public testing::Test {
  protected:
    std::string text_;
    LogWriter log_{[this](std::string_view line) { text_ += line; }};

    json jobs() { return accountOf(text_)["jobs"]; }
};

std::vector<std::string> messagesOf(const json& job) {
    std::vector<std::string> names;
    for (const json& finding : job["findings"]) {
        names.push_back(finding["message"]);
    }
    return names;
}

using Names = std::vector<std::string>;

TEST_F(Jobs, APipeJobIsWhole) {
    log_.pipeJob("P 1", 0xA0, 2);
    const json all = jobs();
    ASSERT_EQ(all.size(), 1u);
    const json& job = all[0];
    EXPECT_EQ(job["printer"], "P 1");
    EXPECT_EQ(job["port"], "LPT1:");
    EXPECT_EQ(job["result"], "printed");
    EXPECT_EQ(job["pages"], 2);
    EXPECT_EQ(job["launch"]["result"], "both found or started");
    EXPECT_EQ(job["dral"]["route"], "pipe");
    EXPECT_EQ(job["dral"]["origin"], "found running");
    EXPECT_EQ(job["dral"]["events"], 4);
    EXPECT_EQ(job["nemb"]["events"], 6);
    EXPECT_EQ(job["firstLine"], 1);
    EXPECT_EQ(messagesOf(job), Names{});
    EXPECT_TRUE(job["firstFailure"].is_null());
}

TEST_F(Jobs, AWindowJobStartsItsCompanions) {
    log_.launchByWindow("P", 0x48, 0x62);
    log_.windowEvent("Dral", "OPENJOB", 0x48, "YESPRINT");
    log_.windowEvent("Nemb", "OPENJOB", 0x62, "YESPRINT");
    log_.windowEvent("Dral", "STARTPAGE", 0x48, "YESPRINT");
    log_.windowEvent("Nemb", "STARTPAGE", 0x62, "YESPRINT");
    log_.windowEvent("Dral", "CLOSEJOB", 0x48, "WAITPRINT");
    log_.windowEvent("Dral", "CLOSEJOB", 0x48, "YESPRINT");
    log_.windowEvent("Nemb", "CLOSEJOB", 0x62, "YESPRINT");
    const json job = jobs()[0];
    EXPECT_EQ(job["dral"]["origin"], "started");
    EXPECT_EQ(job["nemb"]["start"], "by WinExec");
    EXPECT_EQ(job["dral"]["waits"], 1);
    EXPECT_EQ(job["pages"], 1);
    EXPECT_EQ(job["result"], "printed");
    // The last trace before the answer, which has no line of its own before it.
    EXPECT_EQ(job["events"][2]["event"], "PAGE");
    EXPECT_EQ(job["events"][2]["answerMs"], 1);
}

TEST_F(Jobs, WithoutTracesAndClockTheOrderAndTheTicksRemain) {
    log_.options().traces = false;
    log_.options().clock = false;
    log_.pipeJob("P", 0xA0, 3);
    const json account = accountOf(text_);
    const json& job = account["jobs"][0];
    EXPECT_EQ(job["pages"], 3);
    EXPECT_EQ(job["dral"]["events"], 5);
    EXPECT_EQ(job["nemb"]["events"], 8);
    EXPECT_TRUE(job["start"].is_null());
    // From 4294967290 on: the counter went through zero.
    EXPECT_EQ(job["durationMs"], account["summary"]["lines"]["lines"].get<int>() - 1);
    EXPECT_TRUE(job["time"].is_null());
    EXPECT_TRUE(job["events"][0]["answerMs"].is_null());
    EXPECT_EQ(account["summary"]["lines"]["withoutClock"], account["summary"]["lines"]["lines"]);
}

TEST_F(Jobs, On9xTheSidesAreToldApartWithAndWithoutTraces) {
    for (const bool traces : {true, false}) {
        text_.clear();
        log_.options().traces = traces;
        log_.launch9x("P");
        for (const char* event : {"OPENJOB", "STARTPAGE"}) {
            log_.event9x("Dral", event, "YESPRINT");
            log_.event9x("Nemb", event, "YESPRINT");
        }
        log_.event9x("Nemb", "CLOSEJOB", "YESPRINT");
        log_.event9x("Dral", "CLOSEJOB", "WAITPRINT");
        log_.detail("CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000");
        log_.detail("Inside CLOSE JOB loop");
        log_.detail("CLOSEJOB SendMessage rc = YESPRINT");
        const json job = jobs()[0];
        EXPECT_EQ(job["dral"]["route"], "9x") << traces;
        EXPECT_EQ(job["dral"]["origin"], "found running");
        EXPECT_EQ(job["nemb"]["origin"], "started");
        EXPECT_EQ(job["dral"]["events"], 3) << traces;
        EXPECT_EQ(job["nemb"]["events"], 3) << traces;
        EXPECT_EQ(job["dral"]["waits"], 1);
        EXPECT_EQ(job["events"].back()["asks"], 2);
        EXPECT_EQ(job["result"], "printed");
        EXPECT_EQ(messagesOf(job), Names{});
    }
}

TEST_F(Jobs, MixedJobsAreToldApartByThread) {
    LogWriter one = log_;
    LogWriter two = log_;
    one.options().processId = two.options().processId = 0x12;
    one.options().threadId = 0xA;
    two.options().threadId = 0xB;
    one.launchByPipe("One", 0xA0, 0xA4);
    two.launchByPipe("Two", 0xB0, 0xB4);
    one.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    two.pipeEvent("Dral", "OPENJOB", 0xB0, "NOPRINT");
    one.pipeEvent("Nemb", "OPENJOB", 0xA4, "YESPRINT");
    two.pipeEvent("Dral", "CANCELJOB", 0xB0, "YESPRINT");
    two.pipeEvent("Nemb", "CANCELJOB", 0xB4, "YESPRINT");
    one.pipeEvent("Dral", "CLOSEJOB", 0xA0, "YESPRINT");
    one.pipeEvent("Nemb", "CLOSEJOB", 0xA4, "YESPRINT");
    const json all = jobs();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["printer"], "One");
    EXPECT_EQ(all[0]["result"], "printed");
    EXPECT_EQ(all[0]["processId"], 0x12);
    EXPECT_EQ(all[0]["threadId"], 0xA);
    EXPECT_EQ(all[1]["printer"], "Two");
    EXPECT_EQ(all[1]["result"], "refused");
}

TEST_F(Jobs, MixedJobsAreToldApartByTheirPipes) {
    log_.launchByPipe("One", 0xA0, 0xA4);
    log_.launchByPipe("Two", 0xB0, 0xB4);
    for (const char* event : {"OPENJOB", "STARTPAGE", "CLOSEJOB"}) {
        for (const unsigned handle : {0xB0u, 0xA0u}) {
            log_.pipeEvent("Dral", event, handle, "YESPRINT");
            log_.pipeEvent("Nemb", event, handle + 4, "YESPRINT");
        }
    }
    for (const json& job : jobs()) {
        EXPECT_EQ(job["result"], "printed");
        EXPECT_EQ(job["dral"]["events"], 3);
        EXPECT_EQ(job["nemb"]["events"], 3);
        EXPECT_EQ(messagesOf(job), Names{});
    }
}

TEST_F(Jobs, AnAnswerGoesToTheJobThatWaitsForIt) {
    log_.options().traces = false;
    log_.launchByPipe("One", 0xA0, 0xA4);
    log_.launchByPipe("Two", 0xB0, 0xB4);
    log_.detail("SM_OPENJOB. Dral HPIPE = " + handleText(0xA0));
    log_.pipeEvent("Dral", "OPENJOB", 0xB0, "YESPRINT");
    log_.detail("OPENJOB WriteDralPipe. rc = NOPRINT");
    const json all = jobs();
    EXPECT_EQ(all[0]["events"][0]["reply"], "NOPRINT");
    EXPECT_EQ(all[1]["events"][0]["reply"], "YESPRINT");
}

TEST_F(Jobs, ALaunchThatIsTriedAgainIsTheSameJobs) {
    log_.launchByWindow("P", 0, 0x62);
    log_.wait(250);
    log_.launchByWindow("P", 0x48, 0x62);
    log_.windowEvent("Dral", "OPENJOB", 0x48, "YESPRINT");
    log_.windowEvent("Dral", "CLOSEJOB", 0x48, "YESPRINT");
    log_.windowEvent("Nemb", "CLOSEJOB", 0x62, "YESPRINT");
    const json all = jobs();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["launch"]["attempts"], 2);
    EXPECT_EQ(all[0]["launch"]["result"], "both found or started");
    EXPECT_EQ(messagesOf(all[0]), Names{"log-no-window-yet"});
    EXPECT_EQ(all[0]["findings"][0]["weight"], "warning");
}

TEST_F(Jobs, WithTracesAloneTheCallsAreCounted) {
    log_.options().details = false;
    log_.pipeJob("P", 0xA0, 1);
    const json job = jobs()[0];
    EXPECT_EQ(job["dral"]["events"], 3);
    EXPECT_EQ(job["nemb"]["events"], 4);
    EXPECT_EQ(job["events"][0]["delivery"], "not logged");
    EXPECT_EQ(messagesOf(job), Names{"log-no-details"});
}

TEST_F(Jobs, EventsWithoutALaunchAreAJobToo) {
    log_.pipeEvent("Dral", "CLOSEJOB", 0xA0, "YESPRINT");
    const json job = jobs()[0];
    EXPECT_EQ(job["launch"]["result"], "not in the log");
    EXPECT_EQ(messagesOf(job), Names{"log-no-launch"});
    EXPECT_EQ(job["result"], "printed");
}

TEST_F(Jobs, ManyEventsAreCountedAndTheirMiddleIsLeftOut) {
    log_.pipeJob("P", 0xA0, 500);
    const json job = jobs()[0];
    EXPECT_EQ(job["pages"], 500);
    EXPECT_EQ(job["dral"]["events"], 502);
    ASSERT_EQ(job["events"].size(), 151u);
    EXPECT_EQ(job["eventsOmitted"], 502 + 1002 - 150);
    const json& gap = job["events"][100];
    EXPECT_EQ(gap["gap"], true);
    EXPECT_EQ(gap["events"], job["eventsOmitted"]);
    EXPECT_EQ(gap["yes"], job["eventsOmitted"]);
    EXPECT_GT(gap["toMs"], gap["fromMs"]);
    EXPECT_EQ(job["events"].back()["event"], "CLOSEJOB");
}

TEST_F(Jobs, OneLogInTwoFilesIsReadAsOne) {
    log_.pipeJob("P", 0xA0, 4);
    const std::size_t middle = text_.find("STARTPAGE WriteDralPipe");
    const std::size_t cut = text_.find('\n', middle) + 1;
    const TemporaryFile first;
    const TemporaryFile second;
    first.write(text_.substr(0, cut));
    second.write(text_.substr(cut));
    const auto read = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--json", first.path(), second.path()});
        return json::parse(runReader(arguments).out)["jobs"];
    };
    EXPECT_EQ(read({}).size(), 2u);
    const json joined = read({"--joined"});
    ASSERT_EQ(joined.size(), 1u);
    EXPECT_EQ(joined[0]["pages"], 4);
    EXPECT_EQ(joined[0]["result"], "printed");
}

}  // namespace
}  // namespace vok::test
