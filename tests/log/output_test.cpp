// The accounts of logs that the library wrote, in every form.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

class RealLogs : public testing::TestWithParam<const char*> {
  protected:
    std::string log() const { return dataFile(std::string(GetParam()) + ".log"); }
};

// VOK_UPDATE_GOLDEN=1 writes them anew, to be looked at before they are committed.
TEST_P(RealLogs, HaveTheExpectedTable) {
    const std::string expected = dataFile(std::string(GetParam()) + ".txt");
    const RunResult result = runReader({log()});
    EXPECT_LE(result.status, 1);
    if (std::getenv("VOK_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(expected, std::ios::binary) << result.out;
    }
    EXPECT_EQ(result.out, readFile(expected));
}

TEST_P(RealLogs, HaveNoLineThatTheReaderDoesNotKnow) {
    const json lines = json::parse(runReader({"--json", log()}).out)["summary"]["lines"];
    EXPECT_EQ(lines["ownRecords"], lines["lines"]);
    EXPECT_EQ(lines["unknownTexts"], 0);
    EXPECT_EQ(lines["torn"], 0);
    EXPECT_EQ(lines["foreign"], 0);
}

// What every viewer of the format needs of an event.
void checkTraceEvent(const json& event) {
    ASSERT_TRUE(event["name"].is_string());
    ASSERT_TRUE(event["pid"].is_number_unsigned());
    ASSERT_TRUE(event["tid"].is_number_unsigned());
    const std::string phase = event["ph"];
    ASSERT_TRUE(phase == "X" || phase == "M" || phase == "i") << phase;
    if (phase == "X") {
        ASSERT_GT(event["dur"].get<std::int64_t>(), 0);
    }
    if (phase != "M") {
        ASSERT_TRUE(event["ts"].is_number_integer());
    }
}

TEST_P(RealLogs, AreTracesThatViewersTake) {
    const json trace = json::parse(runReader({"--trace", log()}).out);
    const json account = json::parse(runReader({"--json", log()}).out);
    std::map<std::string, std::size_t> kinds;
    for (const json& event : trace["traceEvents"]) {
        checkTraceEvent(event);
        ++kinds[event.value("cat", "")];
    }
    std::size_t events = 0;
    for (const json& job : account["jobs"]) {
        events += job["events"].size();
    }
    EXPECT_EQ(kinds["job"], account["jobs"].size());
    EXPECT_EQ(kinds["launch"], account["jobs"].size());
    EXPECT_EQ(kinds["event"], events);
}

// Slices of one lane may stand in each other, and never overlap by half.
TEST_P(RealLogs, HaveTraceSlicesThatNest) {
    const json trace = json::parse(runReader({"--trace", log()}).out);
    std::map<int, std::vector<std::pair<std::int64_t, std::int64_t>>> lanes;
    for (const json& event : trace["traceEvents"]) {
        if (event["ph"] == "X") {
            const std::int64_t start = event["ts"];
            lanes[event["tid"]].emplace_back(start, start + event["dur"].get<std::int64_t>());
        }
    }
    for (const auto& [lane, slices] : lanes) {
        for (const auto& a : slices) {
            for (const auto& b : slices) {
                EXPECT_FALSE(a.first < b.first && b.first < a.second && a.second < b.second);
            }
        }
    }
}

TEST_P(RealLogs, MakeAPageWithoutAnythingFromElsewhere) {
    const std::string page = runReader({"--html", log()}).out;
    EXPECT_EQ(page.find("http"), std::string::npos);
    EXPECT_EQ(page.find(" src="), std::string::npos);
    EXPECT_EQ(page.find("url("), std::string::npos);
    EXPECT_EQ(page.find('@' + std::string("DATA@")), std::string::npos);
    const std::size_t start = page.find("application/json\">") + 18;
    const json data = json::parse(page.substr(start, page.find("</script>", start) - start));
    EXPECT_EQ(data["jobs"].size(), 2u);
    EXPECT_FALSE(data["jobs"][0]["lines"].empty());
    EXPECT_TRUE(data["clock"]);
}

INSTANTIATE_TEST_SUITE_P(Output, RealLogs,
                         testing::Values("message", "pipe", "nine", "refused", "busy", "die"),
                         [](const auto& file) { return std::string(file.param); });

TEST(Output, OnlyProblemsMeansFewerJobsAndTheSameCounts) {
    const std::vector<std::string> files = {dataFile("pipe.log"), dataFile("refused.log")};
    const json all = json::parse(runReader({"--json", files[0], files[1]}).out);
    const json some = json::parse(runReader({"--json", "--problems", files[0], files[1]}).out);
    EXPECT_EQ(all["jobs"].size(), 4u);
    EXPECT_EQ(some["jobs"].size(), 2u);
    EXPECT_EQ(some["jobs"][0]["file"], files[1]);
    EXPECT_EQ(all["summary"], some["summary"]);
}

TEST(Output, ThePageKeepsProblemsBeforeOthers) {
    const std::string page = runReader({"--html", "--jobs", "2", dataFile("pipe.log"),
                                        dataFile("refused.log"), dataFile("message.log")})
                                 .out;
    EXPECT_NE(page.find("show 2 of 6 jobs: all 2 with a problem, and the latest"),
              std::string::npos);
}

}  // namespace
}  // namespace vok::test
