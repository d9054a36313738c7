// A log of a million lines: every count against grep's, and memory that doesn't grow with it.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <ios>
#include <memory>
#include <string>
#include <string_view>

#include "big_log.h"
#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

constexpr std::uint64_t million = 1000000;
// KiB that the reader may use at most, whatever it reads and writes.
constexpr long memoryLimit = 64L * 1024;
// And where it keeps no page.
constexpr long smallLimit = 10L * 1024;

class BigLog : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        file_ = std::make_unique<TemporaryFile>();
        std::ofstream out(file_->path(), std::ios::binary);
        writeBigLog([&](std::string_view line) { out << line; }, million);
        out.close();
        ASSERT_TRUE(out);
    }
    static void TearDownTestSuite() { file_.reset(); }

    // Lines that match the pattern, as another program counts them.
    static std::uint64_t grep(const std::string& pattern) {
        const std::string command = "LC_ALL=C grep -a -c -e '" + pattern + "' " + file_->path();
        FILE* pipe = popen(command.c_str(), "r");
        std::array<char, 32> answer{};
        const char* line = std::fgets(answer.data(), answer.size(), pipe);
        pclose(pipe);
        return line == nullptr ? 0 : std::stoull(line);
    }

    // Reads the log; the account is in `out`, which may be large.
    static void read(const char* format, const TemporaryFile& out) {
        const RunResult result = runReader({format, "--output", out.path(), file_->path()});
        EXPECT_EQ(result.status, 1) << result.error;
        EXPECT_GT(result.peakMemory, 0);
        EXPECT_LT(result.peakMemory,
                  std::string_view(format) == "--html" ? memoryLimit : smallLimit);
    }

    static std::unique_ptr<TemporaryFile> file_;
};

std::unique_ptr<TemporaryFile> BigLog::file_;

TEST_F(BigLog, CountsAreGreps) {
    const TemporaryFile out(".json");
    read("--json", out);
    const json account = json::parse(std::ifstream(out.path()));
    const json& summary = account["summary"];
    const std::uint64_t jobs = grep("FriendlyName = ");
    EXPECT_GT(jobs, 5000u);
    EXPECT_EQ(summary["jobs"], jobs);
    EXPECT_EQ(account["jobs"].size(), jobs);
    EXPECT_EQ(summary["lines"]["lines"], grep(""));
    EXPECT_GE(grep(""), million);
    EXPECT_EQ(summary["lines"]["ownRecords"], grep("VOK        "));
    EXPECT_EQ(summary["lines"]["torn"], grep("^2024/03/07-09:.$"));
    EXPECT_EQ(summary["lines"]["foreign"], grep("^disk check"));
    EXPECT_EQ(summary["lines"]["unknownTexts"], grep("a text of another version"));
    EXPECT_EQ(summary["lines"]["withoutClock"], grep("^pid="));
    EXPECT_EQ(summary["otherCategories"]["DEMODRAL"]["records"], grep(" DEMODRAL   a line"));
    const std::uint64_t refused = grep("OPENJOB WriteDralPipe. rc = NOPRINT");
    EXPECT_EQ(summary["jobsWithProblems"], refused);
    EXPECT_EQ(summary["results"]["refused"], refused);
    EXPECT_EQ(summary["results"]["printed"], jobs - refused);
    EXPECT_EQ(summary["pages"], grep("STARTPAGE WriteDralPipe. rc = "));
    const json& events = summary["events"];
    EXPECT_EQ(events["DRAL"]["OPENJOB"]["calls"], jobs);
    EXPECT_EQ(events["DRAL"]["OPENJOB"]["no"], refused);
    EXPECT_EQ(events["NEMB"]["PAGE"]["calls"], grep("STARTPAGE/ENDPAGE WriteNembPipe rc = "));
    EXPECT_EQ(events["DRAL"]["CLOSEJOB"]["calls"], grep("CLOSEJOB WriteDralPipe rc = "));
    EXPECT_EQ(events["NEMB"]["CANCELJOB"]["calls"], refused);
}

TEST_F(BigLog, EveryOutputKeepsWithinItsMemory) {
    for (const char* format : {"--trace", "--html"}) {
        const TemporaryFile out;
        read(format, out);
    }
    const RunResult table = runReader({"-o", "/dev/null", file_->path()});
    EXPECT_LT(table.peakMemory, smallLimit);
}

TEST_F(BigLog, ThePageSaysWhatItLeavesOut) {
    const TemporaryFile out(".html");
    read("--html", out);
    const std::string page = out.read();
    EXPECT_LT(page.size(), 64u * 1024 * 1024);
    EXPECT_NE(page.find("The picture and the list show 10,000 of "), std::string::npos);
    EXPECT_NE(page.find("The counts and the messages are of all"), std::string::npos);
    EXPECT_NE(page.find("are shown without their log lines"), std::string::npos);
}

TEST(BigJobs, ThatNeverEndAreKeptInBoundedMemory) {
    const TemporaryFile log;
    std::ofstream out(log.path(), std::ios::binary);
    LogWriter writer([&](std::string_view line) { out << line; });
    constexpr unsigned jobs = 4000;
    for (unsigned job = 0; job < jobs; ++job) {
        writer.options().threadId = 0x1000 + job;
        writer.launchByPipe("P", 0x1000 + 8 * job, 0x1004 + 8 * job);
        for (int page = 0; page < 20; ++page) {
            writer.pipeEvent("Dral", "STARTPAGE", 0x1000 + 8 * job, "YESPRINT");
        }
    }
    out.close();
    const TemporaryFile page(".html");
    const RunResult result = runReader({"--html", "-o", page.path(), log.path()});
    EXPECT_LT(result.peakMemory, memoryLimit);
    const json summary = json::parse(runReader({"--json", log.path()}).out)["summary"];
    EXPECT_EQ(summary["jobs"], jobs);
    EXPECT_EQ(summary["pages"], jobs * 20);
}

TEST(BigJobs, OfAHundredThousandEventsAreKeptInTheMemoryOfAnyLog) {
    const TemporaryFile log;
    std::ofstream out(log.path(), std::ios::binary);
    LogWriter writer([&](std::string_view line) { out << line; });
    constexpr int pages = 33333;  // three events each
    writer.pipeJob("P", 0x100, pages);
    out.close();
    for (const char* format : {"--json", "--trace", "--html", "--problems"}) {
        const TemporaryFile account;
        const RunResult result = runReader({format, "-o", account.path(), log.path()});
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_GT(result.peakMemory, 0);
        EXPECT_LT(result.peakMemory, smallLimit) << format;
    }
    const json account = json::parse(runReader({"--json", log.path()}).out);
    EXPECT_EQ(account["summary"]["jobs"], 1);
    EXPECT_EQ(account["summary"]["pages"], pages);
    const json& job = account["jobs"][0];
    std::uint64_t events = 0;
    for (const json& event : job["events"]) {
        events += event.value("gap", false) ? event["events"].get<std::uint64_t>() : 1;
    }
    EXPECT_EQ(events, 3 * pages + 4);
    EXPECT_GT(job["eventsOmitted"], 3 * pages - 500);
}

}  // namespace
}  // namespace vok::test
