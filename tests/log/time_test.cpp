// Where a job's time went: silence, a clock that was set, slow companions and hosts.
#include "trust.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

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
        jobAcrossSetClock(hours, 0xB0, 0xB4);
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

// Without numbers nothing says when its thread left it.
TEST_F(Trust, AJobThatIsGivenUpTellsNoSilence) {
    constexpr unsigned moreThanAreKept = 300;
    for (unsigned job = 1; job <= moreThanAreKept; ++job) {
        log_.launchByPipe("P", job * 16, job * 16 + 4);
        log_.pipeEvent("Dral", "OPENJOB", job * 16, "YESPRINT");
        log_.pipeEvent("Nemb", "OPENJOB", job * 16 + 4, "YESPRINT");
    }
    const json all = account({"--silent", "100000"});
    std::size_t given = 0;
    for (const json& job : all["jobs"]) {
        const json* finding = findingOf(job, "log-not-closed");
        given += finding != nullptr ? 1 : 0;
        EXPECT_EQ(finding != nullptr ? finding->at("detail") : json(""), "");
    }
    EXPECT_GT(given, 0u);
}

TEST_F(Trust, AClockThatIsSetDoesNotMakeAJobLong) {
    for (const std::int64_t hours : {1, -1}) {
        text_.clear();
        log_.setTime(20000000);
        jobAcrossSetClock(hours, 0xA0, 0xA4);
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

}  // namespace
}  // namespace vok::test
