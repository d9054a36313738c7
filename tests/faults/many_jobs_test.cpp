// Many jobs at once: every job gets its own answers, every line of the log is whole and none is
// lost, and what one thread releases no other uses any more.
#include "faults/many_jobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

#include "faults/known_texts.h"
#include "faults/watched_heap.h"

namespace vok::test {
namespace {

constexpr unsigned seed = 20240307;

constexpr size_t jobsOfEach = 200;
constexpr size_t rounds = 40;
constexpr size_t jobsInRound = 5;

class ManyJobsTest : public ::testing::TestWithParam<Route> {
  protected:
    ManyJobsTest() {
        system.calls.on = false;
        system.clock.stepPerRead = 1;
        system.startLog();
    }

    // The configuration library is not to be had for some of the first loggers, in an order that
    // the seed alone decides; so loggers come and go while other threads call.
    void loseConfigurationNowAndThen(size_t round) {
        std::mt19937 random(seed + static_cast<unsigned>(round));
        system.faults.clear();
        for (size_t i = 0; i < 8; ++i) {
            system.faults.fail("GetConfigData", random() % 2, 1 + random() % 40);
        }
    }

    void runJobs(ManyJobs& jobs, size_t jobsOfEachThread) {
        static RestartedLibrary library(heap::overrides());
        {
            const Started started(library);
            jobs.run(*started, jobsOfEachThread);
            EXPECT_EQ(heap::damage(), Lines());
        }
        EXPECT_EQ(heap::damage(), Lines());
        heap::clear();
        EXPECT_EQ(jobs.wrongAnswers(), 0u);
        answers_ += jobThreads * jobsOfEachThread * jobs.callsOfEachJob();
        EXPECT_EQ(jobs.answers(), answers_);
    }

    void expectNothingLeft() const {
        EXPECT_EQ(system.sids, 0);
        EXPECT_EQ(system.mutexes.countHeld(), 0u);
        EXPECT_EQ(system.complaints, Lines());
        for (const Kind kind : {Kind::file, Kind::mutex, Kind::key, Kind::options, Kind::pipe,
                                Kind::printer, Kind::token, Kind::environment}) {
            EXPECT_EQ(system.handles.countOpen(kind), 0u) << kindName(kind);
        }
    }

    // The lines of the log; each has to be whole.
    Lines wholeLines() const {
        const Lines lines = system.files.lines(system.logPath());
        for (const std::string& line : lines) {
            EXPECT_TRUE(isKnownLine(line) || isKnownCriticalLine(line)) << line;
        }
        return lines;
    }

    System system;
    size_t answers_ = 0;
};

TEST_P(ManyJobsTest, EachJobHasItsAnswersAndEveryLineIsThere) {
    ManyJobs jobs(system, GetParam());
    runJobs(jobs, jobsOfEach);
    expectNothingLeft();
    const Lines lines = wholeLines();
    const auto entries = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find(" +VOK") != std::string::npos;
    });
    std::printf("calls: %zu, lines: %zu\n", answers_, lines.size());
    EXPECT_EQ(static_cast<size_t>(entries), answers_);
}

TEST_P(ManyJobsTest, TheLoggerComesAndGoesMeanwhile) {
    ManyJobs jobs(system, GetParam());
    size_t lost = 0;
    for (size_t round = 0; round < rounds; ++round) {
        loseConfigurationNowAndThen(round);
        runJobs(jobs, jobsInRound);
        lost += system.faults.fired();
        expectNothingLeft();
    }
    EXPECT_GT(lost, rounds);
    std::printf("calls: %zu, lost configurations: %zu, lines: %zu\n", answers_, lost,
                wholeLines().size());
}

INSTANTIATE_TEST_SUITE_P(Routes, ManyJobsTest, ::testing::Values(Route::windows, Route::pipes),
                         [](const auto& route) {
                             return route.param == Route::windows ? "Windows" : "Pipes";
                         });

}  // namespace
}  // namespace vok::test
