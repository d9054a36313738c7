// The reader leaves nothing out that matters, and tells no guess as a fact.
#include "trust.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

TEST_F(Trust, TwoHealthyJobsAtOnceAreNoProblem) {
    log_.launchByWindow("One", 0x48, 0x62);
    log_.launchByWindow("Two", 0x148, 0x162);
    for (const char* event : {"OPENJOB", "STARTPAGE", "STARTPAGE", "CLOSEJOB"}) {
        for (const unsigned window : {0x48u, 0x148u}) {
            log_.windowEvent("Dral", event, window, "YESPRINT");
            log_.windowEvent("Nemb", event, window + 0x1A, "YESPRINT");
        }
    }
    later(20000);
    const json all = account();
    EXPECT_EQ(all["summary"]["jobsWithProblems"], 0);
    EXPECT_EQ(all["summary"]["mixed"], 2);
    for (const json& job : all["jobs"]) {
        EXPECT_EQ(job["mixed"], 2);
        EXPECT_EQ(job["result"], "mixed");
        // How many pages and how long were each one's nobody knows.
        EXPECT_TRUE(job["pages"].is_null() && job["time"].is_null());
    }
    const RunResult shown = table({"--slowest", "2"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_TRUE(contains(shown.out,
                         "mixed       mixed: 2 jobs can't be told apart, turn the numbers on: "
                         "vok-doctor --log on\n"));
    EXPECT_FALSE(contains(shown.out, "\n        launch"));
    EXPECT_TRUE(contains(shown.out,
                         "mixed: 2 jobs can't be told apart, turn the numbers on: "
                         "vok-doctor --log on\n"
                         "Which of the pages, events and times below were theirs is a guess.\n"));
    EXPECT_FALSE(contains(shown.out, "message found"));
    EXPECT_FALSE(contains(shown.out, "started as"));
}

TEST_F(Trust, ARefusedPageIsNamedAndNotCounted) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    log_.pipeEvent("Nemb", "OPENJOB", 0xA4, "YESPRINT");
    for (const char* answer : {"YESPRINT", "NOPRINT"}) {
        log_.pipeEvent("Dral", "STARTPAGE", 0xA0, answer);
    }
    EXPECT_EQ(account()["summary"]["pages"], 1);
    const std::string shown = table().out;
    EXPECT_TRUE(contains(shown, "stopped the job (PAGE 2 answered NOPRINT)"));
    EXPECT_TRUE(contains(shown, "\n1 job: 1 with problems"));
    EXPECT_TRUE(contains(shown, "; 1 page.\n"));
}

TEST_F(Trust, OfAHealthyLogItIsSaid) {
    log_.pipeJob("P", 0xA0, 2);
    EXPECT_TRUE(
        contains(table().out, "\nNothing went wrong between the library and the companions.\n"));
}

TEST_F(Trust, ARefusalAmongMixedJobsIsToldAsTheirs) {
    log_.launchByWindow("One", 0x48, 0x62);
    log_.launchByWindow("Two", 0x148, 0x162);
    for (const char* event : {"OPENJOB", "STARTPAGE", "CLOSEJOB"}) {
        for (const unsigned window : {0x48u, 0x148u}) {
            const bool page = std::string_view(event) == "STARTPAGE";
            log_.windowEvent("Dral", event, window, page ? "NOPRINT" : "YESPRINT");
            log_.windowEvent("Nemb", event, window + 0x1A, "YESPRINT");
        }
    }
    const json summary = account()["summary"];
    EXPECT_EQ(summary["mixed"], 2);
    EXPECT_EQ(summary["jobsWithProblems"], 0);
    EXPECT_EQ(summary["findings"][0]["message"], "log-refused");
    EXPECT_EQ(summary["findings"][0]["inMixedJobs"], 2);
    const std::string shown = table().out;
    EXPECT_TRUE(contains(shown, "is a guess. What failed in one of them is told without its"));
    EXPECT_TRUE(contains(shown, "2 times, 2 in jobs that can't be told apart; line "));
}

TEST_F(Trust, AHangIsNotTakenForTheNextJobsAnswer) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    ask("Dral", "SM_OPENJOB. Dral HPIPE = " + handleText(0xA0));
    log_.wait(600000);
    log_.pipeJob("P", 0xB0, 2);
    const json all = account();
    ASSERT_EQ(all["jobs"].size(), 2u);
    for (const json& job : all["jobs"]) {
        const bool hung = job["firstLine"] == 1;
        EXPECT_EQ(job["result"], hung ? "open" : "printed");
        EXPECT_EQ(findingOf(job, "log-no-answer") != nullptr, hung);
    }
}

TEST_F(Trust, ALogThatSimplyEndsIsNoProblem) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    ask("Dral", "SM_OPENJOB. Dral HPIPE = " + handleText(0xA0));
    EXPECT_EQ(table().status, 0);
    const std::string whole = text_;
    log_.detail("OPENJOB WriteDralPipe. rc = YESPRINT");
    text_.resize(whole.size() + 45);
    const RunResult shown = table();
    EXPECT_EQ(shown.status, 0);
    EXPECT_TRUE(contains(shown.out, "open: the log ends here"));
    EXPECT_EQ(account()["jobs"][0]["endsWithLog"], true);
}

TEST_F(Trust, ARefusedPageInTheMiddleIsListed) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    log_.pipeEvent("Nemb", "OPENJOB", 0xA4, "YESPRINT");
    for (int page = 1; page <= 165; ++page) {
        log_.pipeEvent("Dral", "STARTPAGE", 0xA0, page == 81 ? "NOPRINT" : "YESPRINT");
        log_.pipeEvent("Nemb", "STARTPAGE", 0xA4, "YESPRINT");
    }
    const json job = account()["jobs"][0];
    std::uint64_t listed = 0;
    bool refused = false;
    for (const json& event : job["events"]) {
        listed += event.contains("gap") ? event["events"].get<std::uint64_t>() : 1;
        refused = refused || (event.value("reply", json()) == "NOPRINT" &&
                              event["lastLine"] == job["firstFailure"]["line"]);
    }
    EXPECT_EQ(listed, 332u);
    EXPECT_TRUE(refused);
    const std::string page = table({"--html"}).out;
    EXPECT_TRUE(contains(page, "STARTPAGE WriteDralPipe. rc = NOPRINT"));
}

TEST_F(Trust, EveryFindingIsCounted) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    for (int page = 0; page < 120; ++page) {
        log_.pipeEvent("Nemb", "STARTPAGE", 0xA4, "NOPRINT");
    }
    const json all = account();
    EXPECT_EQ(findingOf(all["jobs"][0], "log-not-handed-on")->at("times"), 120);
    EXPECT_EQ(all["summary"]["findings"][0]["times"], 120);
}

TEST_F(Trust, FiltersShowWhatWasAskedFor) {
    for (const unsigned number : {1u, 2u, 3u}) {
        log_.setTime(3600000 * number);
        log_.options().threadId = number;
        log_.pipeJob("Office " + std::to_string(number), 0xA0, static_cast<int>(number) * 5,
                     number == 2 ? "NOPRINT" : "YESPRINT");
    }
    const auto shown = [&](std::vector<std::string> arguments) {
        std::string numbers;
        const json all = account(arguments);
        for (const json& job : all["jobs"]) {
            numbers += std::to_string(job["job"].get<int>());
        }
        EXPECT_EQ(all["summary"]["jobs"], 3);
        return numbers;
    };
    EXPECT_EQ(shown({"--printer", "office 3"}), "3");
    EXPECT_EQ(shown({"--since", "2024/03/07-02:00"}), "23");
    EXPECT_EQ(shown({"--until", "2024-03-07 02:30"}), "12");
    EXPECT_EQ(shown({"--only", "refused"}), "2");
    EXPECT_EQ(shown({"--only", "nemb"}), "");
    EXPECT_FALSE(contains(table().out, "Nothing went wrong"));
    EXPECT_TRUE(contains(table({"--only", "nemb"}).out, "None of the jobs is one of those asked"));
    EXPECT_EQ(shown({"--only", "log-refused", "--only", "printed"}), "123");
    EXPECT_EQ(shown({"--slowest", "2"}), "31");
    // The log may follow at once.
    const TemporaryFile file;
    file.write(text_);
    EXPECT_EQ(runReader({"--only", "refused", file.path()}).status, 1);
    EXPECT_EQ(table({"--only", "nonsense"}).status, 2);
    EXPECT_EQ(table({"--since", "noon"}).status, 2);
}

TEST_F(Trust, RowsNameTheFileAndAsWhomACompanionWasStarted) {
    log_.beginLaunch("P");
    log_.beginDral("Pipes");
    log_.detail("dral path - DEMODRAL.EXE");
    log_.startAsUser("Dral");
    log_.detail("Calling CPAU");
    log_.detail("Launching Dlar, Path = DEMODRAL.EXE");
    log_.detail("Return from StartDRALXP Pipes. Dral HPIPE = " + handleText(0xA0));
    log_.beginNemb("Pipes");
    log_.detail("nemb path - DEMONEMB.EXE");
    log_.startAsUser("Nemb", false);
    log_.detail("Calling CPAU");
    log_.detail("Launching Nmeb, Path = DEMONEMB.EXE");
    log_.detail("Nemb HPIPE from CreateNamedPipe = " + handleText(0xA4));
    log_.detail("rc = TRUE from VOKLaunchXFiles StartJobTime=1");
    const TemporaryFile first("-first.log");
    const TemporaryFile second("-second.log");
    first.write(text_);
    second.write(text_);
    const std::string shown = runReader({first.path(), second.path()}).out;
    EXPECT_TRUE(contains(shown, "pipe started as user"));
    EXPECT_TRUE(contains(shown, "pipe started as spooler"));
    EXPECT_TRUE(contains(shown, "\nFILE") || shown.starts_with("FILE"));
    EXPECT_TRUE(contains(shown, first.path().substr(0, 20)));
}

}  // namespace
}  // namespace vok::test
