// A log that grows while the reader follows it. What is waited for may take as long as it likes.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <regex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "log_writer.h"
#include "support.h"

namespace vok::test {
namespace {

namespace fs = std::filesystem;

// vok-log --follow, running beside the test.
class Follower {
  public:
    explicit Follower(const std::string& log, std::vector<std::string> more = {}) {
        std::vector<std::string> words = {VOK_LOG_PROGRAM, "--follow", log};
        words.insert(words.end(), more.begin(), more.end());
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        constexpr int flags = O_WRONLY | O_TRUNC;
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out_.path().c_str(), flags, 0);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, error_.path().c_str(), flags, 0);
        const int failed =
            posix_spawn(&process_, VOK_LOG_PROGRAM, &files, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        if (failed != 0) {
            throw std::system_error(failed, std::generic_category(), VOK_LOG_PROGRAM);
        }
    }
    ~Follower() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;

    // Whether a line like this comes.
    bool shows(const std::string& line) const { return comes(out_, line); }
    bool says(const std::string& line) const { return comes(error_, line); }
    std::string shown() const { return out_.read(); }

    // As Ctrl-C does; the exit status.
    int interrupt() {
        kill(process_, SIGINT);
        int status = 0;
        waitpid(std::exchange(process_, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    static bool comes(const TemporaryFile& file, const std::string& line) {
        constexpr std::chrono::seconds limit(600);
        const std::regex wanted(line);
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!std::regex_search(file.read(), wanted)) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }

    TemporaryFile out_{".out"};
    TemporaryFile error_{".err"};
    pid_t process_ = 0;
};

// Adds to the log as the library does: opened and closed for each piece.
void append(const std::string& log, std::string_view text) {
    std::ofstream(log, std::ios::binary | std::ios::app) << text;
}

std::string written(const std::function<void(LogWriter&)>& by, LogOptions options = {}) {
    std::string text;
    LogWriter writer([&](std::string_view line) { text += line; }, options);
    by(writer);
    return text;
}

std::string wholeJob(const std::string& printer) {
    return written([&](LogWriter& log) { log.pipeJob(printer, 0x100, 2); });
}

// A job that waits for NEMB's answer, and what comes when it is there.
std::pair<std::string, std::string> hangingJob(LogOptions options = {}) {
    const std::string all =
        written([](LogWriter& log) { log.pipeJob("Hanging", 0x200, 1); }, options);
    const std::size_t answer = all.find("OPENJOB WriteNembPipe rc");
    const std::size_t cut = all.rfind('\n', answer) + 1;
    return {all.substr(0, cut), all.substr(cut)};
}

TEST(Follow, JobsAreShownAsTheyEnd) {
    const TemporaryFile log;
    Follower reader(log.path());
    append(log.path(), wholeJob("First"));
    EXPECT_TRUE(reader.shows("\n +1 .* First .* printed\n"));
    const std::string second = wholeJob("Second");
    append(log.path(), second.substr(0, second.size() / 2));
    append(log.path(), second.substr(second.size() / 2));
    EXPECT_TRUE(reader.shows("\n +2 .* Second .* printed\n"));
    EXPECT_EQ(reader.interrupt(), 0);
    EXPECT_TRUE(reader.shows("\n2 jobs: 0 with problems"));
    EXPECT_TRUE(reader.shows(" 0 torn, 0 foreign"));
    const std::string shown = reader.shown();
    EXPECT_EQ(shown.find(" First "), shown.rfind(" First ")) << shown;
}

TEST(Follow, AHangingJobIsShownWhileItHangsAndWhenItEnds) {
    const TemporaryFile log;
    const auto [begin, end] = hangingJob();
    log.write(begin);
    Follower reader(log.path(), {"--silent", "0.3"});
    EXPECT_TRUE(reader.shows("\n +1 .* open +open: silent for .* so far; NEMB: .*not answer"));
    append(log.path(), end);
    EXPECT_TRUE(reader.shows("\n +1 .* Hanging .* printed\n"));
    EXPECT_EQ(reader.interrupt(), 0);
    EXPECT_TRUE(reader.shows("\n1 job: 0 with problems"));
}

TEST(Follow, AJobThatHangsAtTheEndIsAProblem) {
    LogOptions withoutClock;
    withoutClock.clock = false;
    for (const LogOptions& options : {LogOptions(), withoutClock}) {
        const TemporaryFile log;
        log.write(hangingJob(options).first);
        Follower reader(log.path(), {"--silent", "0.3"});
        EXPECT_TRUE(reader.shows("silent for .* so far; NEMB: .*not answer"));
        EXPECT_EQ(reader.interrupt(), 1);
        EXPECT_TRUE(reader.shows("\n1 job: 1 with problems"));
        EXPECT_TRUE(reader.shows("log-no-answer"));
    }
}

// DRAL's page by window is not written before it is answered: its entry is all that is there.
TEST(Follow, ACallOfWhichOnlyTheEntryIsThereIsNamed) {
    LogOptions options;
    options.threadId = 0x10;
    const TemporaryFile log;
    const std::string all = written(
        [](LogWriter& writer) {
            writer.launchByWindow("P", 0x100, 0x104);
            writer.windowEvent("Dral", "OPENJOB", 0x100, "YESPRINT");
            writer.windowEvent("Nemb", "OPENJOB", 0x104, "YESPRINT");
            writer.windowEvent("Dral", "STARTPAGE", 0x100, "YESPRINT");
        },
        options);
    log.write(all.substr(0, all.rfind('\n', all.size() - 2) + 1));
    Follower reader(log.path(), {"--silent", "0.3"});
    EXPECT_TRUE(reader.shows("so far; DRAL: .*not answer"));
    EXPECT_EQ(reader.interrupt(), 1);
}

TEST(Follow, ALogThatIsNotThereYetIsWaitedFor) {
    const TemporaryFile place;
    fs::remove(place.path());
    Follower reader(place.path());
    EXPECT_TRUE(reader.says("is not there yet: waiting for it\n"));
    append(place.path(), wholeJob("Late"));
    EXPECT_TRUE(reader.shows(" Late .* printed\n"));
    EXPECT_EQ(reader.interrupt(), 0);
}

TEST(Follow, ALogThatNeverComesIsNoLog) {
    const TemporaryFile place;
    fs::remove(place.path());
    Follower reader(place.path());
    EXPECT_TRUE(reader.says("is not there yet"));
    EXPECT_EQ(reader.interrupt(), 2);
    EXPECT_TRUE(reader.says("no log: it never was there\n"));
}

// What is done to the log while a job is on its way; the job ends in what has its name then.
class BegunAnew : public testing::TestWithParam<const char*> {
  protected:
    void beginAnew(const std::string& log) {
        const std::string way = GetParam();
        if (way == "emptied") {
            fs::resize_file(log, 0);
        } else if (way == "deleted") {
            fs::remove(log);
        } else {
            fs::rename(log, aside_.path());
        }
    }

  private:
    TemporaryFile aside_;
};

TEST_P(BegunAnew, JobsGoOnIntoTheNewFile) {
    const TemporaryFile log;
    const auto [begin, end] = hangingJob();
    log.write(wholeJob("First") + begin);
    Follower reader(log.path());
    EXPECT_TRUE(reader.shows(" First .* printed\n"));
    beginAnew(log.path());
    EXPECT_TRUE(reader.says("was renamed, deleted or emptied"));
    append(log.path(), end);
    EXPECT_TRUE(reader.shows(" Hanging .* printed\n"));
    append(log.path(), wholeJob("Third"));
    EXPECT_TRUE(reader.shows(" Third .* printed\n"));
    EXPECT_EQ(reader.interrupt(), 0);
    EXPECT_TRUE(reader.shows("\n3 jobs: 0 with problems"));
}

INSTANTIATE_TEST_SUITE_P(Follow, BegunAnew, testing::Values("renamed", "deleted", "emptied"),
                         [](const auto& way) { return std::string(way.param); });

TEST(Follow, WhatIsNoLogIsSaidAtOnce) {
    const TemporaryFile log;
    log.write("a letter\nto somebody\n");
    Follower reader(log.path());
    EXPECT_TRUE(reader.says("no log so far: none of its 2 lines is a record\n"));
    EXPECT_EQ(reader.interrupt(), 2);
}

TEST(Follow, OnlyWantedJobsAreShown) {
    const TemporaryFile log;
    log.write(wholeJob("First") + wholeJob("Second"));
    Follower reader(log.path(), {"--printer", "second"});
    EXPECT_TRUE(reader.shows(" Second .* printed\n"));
    EXPECT_EQ(reader.interrupt(), 0);
    EXPECT_EQ(reader.shown().find(" First "), std::string::npos);
}

TEST(Follow, WhatCannotBeFollowedIsRefused) {
    const TemporaryFile log;
    const TemporaryFile compressed(".gz");
    log.write(wholeJob("P"));
    ASSERT_EQ(std::system(("gzip -c " + log.path() + " > " + compressed.path()).c_str()), 0);
    const std::string needsEnd = "need the log's end";
    const std::string oneFile = "follows one log, which is named as a file";
    const std::pair<std::vector<std::string>, std::string> wrong[] = {
        {{compressed.path()}, "a compressed log doesn't grow"},
        {{"/dev/null"}, "is no file that can grow"},
        {{testing::TempDir()}, "is a folder"},
        {{log.path(), log.path()}, oneFile},
        {{"-"}, oneFile},
        {{log.path(), "--json"}, needsEnd},
        {{log.path(), "--trace"}, needsEnd},
        {{log.path(), "--html"}, needsEnd},
        {{log.path(), "--slowest", "3"}, needsEnd},
        {{log.path(), "-o", compressed.path() + ".txt"}, needsEnd}};
    for (const auto& [words, reason] : wrong) {
        std::vector<std::string> arguments = {"--follow"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const RunResult result = runReader(arguments);
        EXPECT_EQ(result.status, 2) << words.back();
        EXPECT_NE(result.error.find(reason), std::string::npos) << result.error;
    }
}

}  // namespace
}  // namespace vok::test
