// What the reader takes in: torn and foreign lines, files of all kinds, and what it answers.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <ios>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "big_log.h"
#include "log_writer.h"
#include "progress.h"
#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

std::string oneJob(const std::string& reply = "YESPRINT") {
    std::string text;
    LogWriter([&](std::string_view line) { text += line; }).pipeJob("P", 0xA0, 2, reply);
    return text;
}

json linesOf(const std::string& log) {
    return accountOf(log)["summary"]["lines"];
}

TEST(Lines, BrokenOnesAreCountedAndLeftOut) {
    const std::string good = oneJob();
    const std::string bad = "no record at all\r\n2024/03/07-00:0\r\n\r\n" + std::string(9, '\0') +
                            "\r\n" + std::string(300000, 'x') + "\r\n";
    const json account = accountOf(bad + good + bad);
    EXPECT_EQ(account["summary"]["lines"]["foreign"], 4);
    EXPECT_EQ(account["summary"]["lines"]["torn"], 4);
    EXPECT_EQ(account["summary"]["jobs"], 1);
    EXPECT_EQ(account["jobs"][0]["pages"], 2);
}

TEST(Lines, ARecordInTheMiddleOfALineIsRead) {
    const std::string good = oneJob();
    const std::size_t second = good.find('\n') + 1;
    const json account =
        accountOf("2024/03/07-00:00:00.000 VOK        SM_OP" + good.substr(second));
    EXPECT_EQ(account["summary"]["lines"]["torn"], 1);
    EXPECT_EQ(account["jobs"][0]["result"], "printed");
}

TEST(Lines, TheLastOneMayBeCut) {
    std::string text = oneJob();
    text.resize(text.size() - 10);
    const json lines = linesOf(text);
    EXPECT_EQ(lines["torn"], 1);
    EXPECT_EQ(lines["ownRecords"], lines["lines"].get<int>() - 1);
}

TEST(Lines, BareLineFeedsAreLineEndsToo) {
    std::string text = oneJob();
    std::erase(text, '\r');
    EXPECT_EQ(linesOf(text)["torn"], 0);
    EXPECT_EQ(accountOf(text)["jobs"][0]["result"], "printed");
}

TEST(Lines, AClockThatGoesBackIsSaid) {
    std::string text;
    LogWriter log([&](std::string_view line) { text += line; });
    log.setTime(5000000);
    log.launchByPipe("P", 0xA0, 0xA4);
    log.setTime(1000000);
    log.pipeEvent("Dral", "CLOSEJOB", 0xA0, "YESPRINT");
    const json account = accountOf(text);
    EXPECT_EQ(account["summary"]["lines"]["clockBack"], 1);
    EXPECT_TRUE(account["jobs"][0]["durationMs"].is_null());
}

TEST(Lines, OtherBytesThanAsciiSurviveInJson) {
    std::string text;
    LogWriter([&](std::string_view line) { text += line; }).pipeJob("B\xfcro <\"&>", 0xA0, 0);
    EXPECT_EQ(accountOf(text)["jobs"][0]["printer"], "Büro <\"&>");
}

// Always the same damages, so that a failure comes again.
std::string damaged(std::string log, unsigned seed) {
    std::minstd_rand random(seed);
    for (int i = 0; i < 200; ++i) {
        const std::size_t at = random() % log.size();
        switch (random() % 3) {
            case 0:
                log.erase(at, random() % 60);
                break;
            case 1:
                log[at] = static_cast<char>(random() % 256);
                break;
            default:
                log.insert(at, log.substr(random() % log.size(), random() % 200));
        }
    }
    return log;
}

TEST(Lines, NoDamageIsFatal) {
    const std::string log = readFile(dataFile("pipe.log")) + readFile(dataFile("nine.log"));
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const std::string text = damaged(log, seed);
        const json lines = linesOf(text);
        EXPECT_EQ(lines["lines"],
                  std::count(text.begin(), text.end(), '\n') + (text.ends_with('\n') ? 0 : 1))
            << seed;
    }
}

TEST(Files, CompressedOnesAndTheStandardInputAreRead) {
    const TemporaryFile packed(".log.gz");
    const gzFile file = gzopen(packed.path().c_str(), "wb");
    const std::string log = oneJob();
    gzwrite(file, log.data(), static_cast<unsigned>(log.size()));
    gzclose(file);
    for (const RunResult& result :
         {runReader({"--json", packed.path()}), runReader({"--json", "-"}, log),
          runReader({"--json", "-"}, packed.read())}) {
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_EQ(json::parse(result.out)["jobs"][0]["pages"], 2);
    }
}

TEST(Files, ADamagedOneIsReadAsFarAsItGoes) {
    const TemporaryFile packed(".log.gz");
    const gzFile file = gzopen(packed.path().c_str(), "wb");
    writeBigLog(
        [&](std::string_view line) {
            gzwrite(file, line.data(), static_cast<unsigned>(line.size()));
        },
        5000);
    gzclose(file);
    std::string half = packed.read();
    half.resize(half.size() / 2);
    packed.write(half);
    const json summary = json::parse(runReader({"--json", packed.path()}).out)["summary"];
    EXPECT_GT(summary["jobs"], 10);
    bool said = false;
    for (const json& finding : summary["findings"]) {
        said = said || finding["message"] == "log-file-damaged";
    }
    EXPECT_TRUE(said);
}

TEST(Status, TellsProblemsFromMisuse) {
    const TemporaryFile good;
    const TemporaryFile bad;
    const TemporaryFile empty;
    good.write(oneJob());
    bad.write(oneJob("NOPRINT"));
    EXPECT_EQ(runReader({good.path()}).status, 0);
    EXPECT_EQ(runReader({empty.path()}).status, 2);
    EXPECT_EQ(runReader({good.path(), bad.path()}).status, 1);
    EXPECT_EQ(runReader({"--help"}).status, 0);
    EXPECT_EQ(runReader({"--version"}).status, 0);
    const std::vector<std::vector<std::string>> misuses = {
        {},
        {"--no-such-option", good.path()},
        {"--json", "--html", good.path()},
        {"--slow", "-1", good.path()},
        {"/no/such/file.log"},
        {testing::TempDir()},
        {"-o", "/no/such/folder/out", good.path()}};
    for (const auto& misuse : misuses) {
        const RunResult result = runReader(misuse);
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.error, "");
    }
}

TEST(Status, AMissingFileLeavesAnEarlierAccountAlone) {
    const TemporaryFile out;
    out.write("earlier");
    EXPECT_EQ(runReader({"-o", out.path(), "/no/such/file.log"}).status, 2);
    EXPECT_EQ(out.read(), "earlier");
}

TEST(Status, AFullDiskIsAFailure) {
    const TemporaryFile good;
    good.write(oneJob());
    EXPECT_EQ(runReader({"--html", "-o", "/dev/full", good.path()}).status, 2);
}

TEST(ProgressBar, ShowsPartAndLines) {
    EXPECT_EQ(log::progressText({0, 50, 200, 1234}, "a.log"),
              "a.log  [#######.......................]  25%  1,234 lines");
    EXPECT_EQ(log::progressText({0, 0, 0, 1234}, "-"), "-  1,234 lines");
}

// What the reader writes to a terminal that is its error output.
std::string onTerminal(const std::string& path, bool wanted) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        const int out = open("/dev/null", O_WRONLY);
        dup2(out, STDOUT_FILENO);
        execl(VOK_LOG_PROGRAM, VOK_LOG_PROGRAM, path.c_str(), wanted ? nullptr : "--no-progress",
              nullptr);
        _exit(127);
    }
    std::string text;
    char buffer[4096];
    // The terminal answers with an error once the reader is gone.
    for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    waitpid(child, nullptr, 0);
    close(terminal);
    return text;
}

TEST(ProgressBar, IsDrawnOnATerminalAndWipedAtTheEnd) {
    const TemporaryFile file;
    std::ofstream out(file.path(), std::ios::binary);
    writeBigLog([&](std::string_view line) { out << line; }, 20000);
    out.close();
    const std::string shown = onTerminal(file.path(), true);
    EXPECT_NE(shown.find('%'), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with(" \r")) << shown;
    EXPECT_EQ(onTerminal(file.path(), false), "");
    EXPECT_EQ(runReader({file.path()}).error, "");
}

}  // namespace
}  // namespace vok::test
