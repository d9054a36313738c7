// What the reader is trusted with: the customer's files, and not to tell a guess as a fact.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "log_writer.h"
#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

class Trust : public testing::Test {
  protected:
    std::string text_;
    LogWriter log_{[this](std::string_view line) { text_ += line; }};

    json account(std::vector<std::string> arguments = {}) { return accountOf(text_, arguments); }

    RunResult table(std::vector<std::string> arguments = {}) {
        const TemporaryFile file;
        file.write(text_);
        arguments.push_back(file.path());
        return runReader(arguments);
    }

    // The log goes on without the job.
    void later(std::int64_t milliseconds) {
        log_.wait(milliseconds);
        log_.record("DEMODRAL", "a line of a companion");
    }

    void ask(const std::string& side, const std::string& text) {
        log_.trace("VOKSend" + side + "Msg");
        log_.detail(text);
    }
};

const json* findingOf(const json& job, const std::string& message) {
    for (const json& finding : job["findings"]) {
        if (finding["message"] == message) {
            return &finding;
        }
    }
    return nullptr;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

int shell(const std::string& command) {
    return WEXITSTATUS(std::system(command.c_str()));
}

TEST_F(Trust, TheLogItselfIsNeverWrittenTo) {
    log_.pipeJob("P", 0xA0, 1);
    const TemporaryFile file;
    file.write(text_);
    const std::string link = file.path() + ".link";
    const std::string hardLink = file.path() + ".hard";
    fs::create_symlink(file.path(), link);
    fs::create_hard_link(file.path(), hardLink);
    const fs::path path(file.path());
    const std::string spelled = (path.parent_path() / "." / path.filename()).string();
    for (const std::string& output : {file.path(), link, hardLink, spelled}) {
        EXPECT_EQ(runReader({"-o", output, file.path()}).status, 2) << output;
        EXPECT_EQ(runReader({"--messages", "-o", output, file.path()}).status, 2) << output;
        EXPECT_EQ(file.read(), text_) << output;
    }
    const std::string reader = VOK_LOG_PROGRAM;
    EXPECT_EQ(shell(reader + " " + file.path() + " 2>/dev/null >>" + file.path()), 2);
    EXPECT_EQ(shell(reader + " -o " + file.path() + " - 2>/dev/null <" + file.path()), 2);
    EXPECT_EQ(file.read(), text_);
    fs::remove(link);
    fs::remove(hardLink);
}

TEST_F(Trust, AnAccountThatCouldNotBeWrittenLeavesTheEarlierOne) {
    log_.pipeJob("P", 0xA0, 20);
    const TemporaryFile file;
    file.write(text_);
    const fs::path folder = file.path() + ".folder";
    fs::create_directory(folder);
    const std::string out = (folder / "out.json").string();
    EXPECT_EQ(shell("echo earlier >" + out), 0);
    EXPECT_EQ(shell("trap '' XFSZ; ulimit -f 1; " + std::string(VOK_LOG_PROGRAM) + " --json -o " +
                    out + " " + file.path() + " 2>/dev/null"),
              2);
    EXPECT_EQ(readFile(out), "earlier\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
    EXPECT_EQ(runReader({"--json", "-o", out, file.path()}).status, 0);
    EXPECT_EQ(json::parse(readFile(out))["jobs"].size(), 1u);
    fs::remove_all(folder);
}

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

TEST_F(Trust, AJobThatIsSilentWhileTheLogGoesOnHangs) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    log_.pipeEvent("Nemb", "OPENJOB", 0xA4, "YESPRINT");
    ask("Dral", "SM_CLOSEJOB. Dral HPIPE = " + handleText(0xA0));
    later(10500000);
    const json job = account()["jobs"][0];
    EXPECT_EQ(job["result"], "open");
    EXPECT_EQ(job["silentMs"], 10500001);
    EXPECT_EQ(job["endsWithLog"], false);
    EXPECT_EQ(job["firstFailure"]["message"], "log-no-answer");
    const RunResult shown = table();
    EXPECT_EQ(shown.status, 1);
    EXPECT_TRUE(contains(shown.out,
                         "open: silent for 2 h 55 min when the log ends; DRAL: The companion did "
                         "not answer (CLOSEJOB), line "));
    EXPECT_TRUE(contains(shown.out, "the silence of open jobs"));
    EXPECT_TRUE(contains(shown.out, "2 h 55 min+"));
    EXPECT_TRUE(
        contains(runReader({"--messages"}).out, "never opened its pipe can't end the wait"));
    EXPECT_EQ(table({"--silent", "20000"}).status, 0);
    EXPECT_TRUE(contains(table({"--slowest", "1"}).out, ", silent 2 h 55 min\n"));
}

TEST_F(Trust, AClockThatIsSetIsNoSilence) {
    for (const std::int64_t hours : {1, -1}) {
        text_.clear();
        log_.setTime(20000000);
        log_.options().threadId = 1;
        log_.launchByPipe("P", 0xA0, 0xA4);
        log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
        log_.options().threadId = 2;
        log_.launchByPipe("P", 0xB0, 0xB4);
        log_.pipeEvent("Dral", "OPENJOB", 0xB0, "YESPRINT");
        log_.wait(4900);
        log_.setClock(20005000 + hours * 3600000);
        log_.pipeEvent("Dral", "CLOSEJOB", 0xB0, "YESPRINT");
        log_.pipeEvent("Nemb", "CLOSEJOB", 0xB4, "YESPRINT");
        const json all = account();
        ASSERT_EQ(all["jobs"].size(), 2u);
        const json& open = all["jobs"][all["jobs"][0]["result"] == "open" ? 0 : 1];
        EXPECT_EQ(open["result"], "open");
        EXPECT_NEAR(open["silentMs"].get<double>(), 6000.0, 2000.0) << hours;
        EXPECT_EQ(open["endsWithLog"], true) << hours;
    }
}

TEST_F(Trust, AJobThatIsLeftTellsHowLongItWasSilent) {
    log_.options().threadId = 1;
    log_.launchByPipe("P", 0xA0, 0xA4);
    log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    log_.pipeEvent("Nemb", "OPENJOB", 0xA4, "YESPRINT");
    log_.wait(7200000);
    log_.pipeJob("P", 0xB0, 1);
    const json job = account()["jobs"][0];
    EXPECT_EQ(job["result"], "unfinished");
    EXPECT_EQ(findingOf(job, "log-not-closed")->at("detail"), "silent for 2 h 0 min");
    EXPECT_TRUE(contains(table().out, "The job has no end (silent for 2 h 0 min), line "));
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

std::string utf16(const std::string& text, bool big) {
    std::string out = big ? "\xFE\xFF" : "\xFF\xFE";
    for (const char byte : text) {
        out += big ? std::string(1, '\0') + byte : std::string(1, byte) + '\0';
    }
    return out;
}

TEST_F(Trust, EditorsEncodingsAreRead) {
    log_.pipeJob("P", 0xA0, 300);
    for (const std::string& text :
         {"\xEF\xBB\xBF" + text_, utf16(text_, false), utf16(text_, true)}) {
        const json all = accountOf(text);
        EXPECT_EQ(all["jobs"][0]["pages"], 300);
        EXPECT_EQ(all["summary"]["lines"]["torn"], 0);
        EXPECT_EQ(all["summary"]["lines"]["foreign"], 0);
    }
}

TEST_F(Trust, WhatIsNoLogIsCalledSo) {
    const std::string dll = "MZ" + std::string(3000, '\0') + "\nThis program\n";
    for (const std::string& bytes :
         {std::string(), dll, readFile(std::string(VOK_SOURCE_DIR) + "/README.md")}) {
        text_ = bytes;
        const RunResult shown = table();
        EXPECT_EQ(shown.status, 2);
        EXPECT_TRUE(contains(shown.error, "no log: ")) << shown.error;
        // What is said of a log's lines, of a full disk for instance, does not hold for it.
        EXPECT_FALSE(contains(shown.out, "[log-")) << shown.out;
        const TemporaryFile file;
        file.write(text_);
        const json all = json::parse(runReader({"--json", file.path()}).out)["summary"];
        EXPECT_EQ(all["notLogs"][0]["file"], file.path());
        EXPECT_TRUE(contains(shown.error, all["notLogs"][0]["why"]));
        EXPECT_EQ(all["lines"]["lines"], 0);
        EXPECT_TRUE(contains(runReader({"--html", file.path()}).out, " is no log: "));
    }
}

TEST_F(Trust, AClockThatIsSetDoesNotMakeAJobLong) {
    for (const std::int64_t hours : {1, -1}) {
        text_.clear();
        log_.setTime(20000000);
        log_.launchByPipe("P", 0xA0, 0xA4);
        log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
        log_.wait(4900);
        log_.setClock(20004960 + hours * 3600000);
        log_.pipeEvent("Dral", "CLOSEJOB", 0xA0, "YESPRINT");
        log_.pipeEvent("Nemb", "CLOSEJOB", 0xA4, "YESPRINT");
        const json job = account()["jobs"][0];
        EXPECT_LT(job["durationMs"], 6000) << hours;
        EXPECT_GT(job["durationMs"], 4000) << hours;
        ASSERT_EQ(job["clockJumps"].size(), 1u) << hours;
        EXPECT_NEAR(job["clockJumps"][0]["ms"].get<double>(),
                    static_cast<double>(hours) * 3600000.0, 2000);
        EXPECT_NE(findingOf(job, "log-clock-jump"), nullptr);
        EXPECT_EQ(findingOf(job, "log-slow-host"), nullptr);
        EXPECT_EQ(job["firstFailure"]["weight"], "note");
    }
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

TEST_F(Trust, TimeIsExplained) {
    log_.launchByWindow("P", 0, 0x62);
    log_.launchByWindow("P", 0, 0x62);
    ask("Dral", "Null Window Handle in SendDralMsgXP");
    log_.detail("Waiting for Dral to finish initialization. Sleeping");
    log_.wait(110000);
    log_.detail("Finished waiting. Attempting FindWindow again...");
    log_.detail("SM_OPENJOB. Dral HWND = " + handleText(0x48));
    log_.detail("OPENJOB SendMessage rc = YESPRINT");
    log_.wait(1200000);
    for (int i = 0; i < 403; ++i) {
        log_.windowEvent("Nemb", "OPENJOB", 0x62, "WAITPRINT");
        log_.wait(1000);
    }
    log_.windowEvent("Nemb", "OPENJOB", 0x62, "YESPRINT");
    log_.windowEvent("Dral", "CLOSEJOB", 0x48, "YESPRINT");
    log_.windowEvent("Nemb", "CLOSEJOB", 0x62, "YESPRINT");
    const json all = account();
    const json& job = all["jobs"][0];
    std::int64_t sum = 0;
    for (const auto& [phase, ms] : job["time"].items()) {
        sum += ms.get<std::int64_t>();
    }
    EXPECT_EQ(sum, job["durationMs"]);
    EXPECT_GE(job["time"]["startupMs"], 110000);
    EXPECT_GE(job["time"]["waitMs"], 403000);
    EXPECT_GE(job["time"]["hostMs"], 1200000);
    for (const char* message : {"log-many-waits", "log-long-startup", "log-slow-host"}) {
        ASSERT_NE(findingOf(job, message), nullptr) << message;
    }
    // Where the host stood still, not where the job began.
    EXPECT_GT((*findingOf(job, "log-slow-host"))["line"], job["firstLine"]);
    const std::string host = findingOf(job, "log-slow-host")->at("detail");
    EXPECT_TRUE(host.starts_with("20 min 0 s in a row, ") && host.ends_with(" in all")) << host;
    EXPECT_TRUE(contains(findingOf(job, "log-many-waits")->at("detail"), "403 times"));
    EXPECT_EQ(all["summary"]["jobsWithWarnings"], 1);
    EXPECT_TRUE(contains(table().out, "start-up 1 min 50 s"));
    EXPECT_EQ(json::parse(table({"--trace"}).out)["traceEvents"][2]["args"]["time"], job["time"]);
}

TEST_F(Trust, WhatCameAfterALongPauseIsListed) {
    log_.launchByPipe("P", 0xA0, 0xA4);
    log_.pipeEvent("Dral", "OPENJOB", 0xA0, "YESPRINT");
    for (int page = 1; page <= 400; ++page) {
        log_.wait(page == 200 ? 1200000 : 10);
        log_.pipeEvent("Dral", "STARTPAGE", 0xA0, "YESPRINT");
    }
    const json job = account()["jobs"][0];
    const json& line = job["firstFailure"]["line"];
    EXPECT_EQ(job["firstFailure"]["message"], "log-slow-host");
    EXPECT_TRUE(std::ranges::any_of(job["events"],
                                    [&](const json& event) { return event["firstLine"] == line; }));
    EXPECT_TRUE(contains(table({"--html"}).out, "[" + line.dump() + ","));
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
