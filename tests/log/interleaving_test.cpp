// Correct jobs that run at the same time, their lines in any order: with process and thread numbers
// they are told exactly, without them by their pipes.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "in_process.h"
#include "log_writer.h"

namespace vok::test {
namespace {

using Random = std::minstd_rand;

struct WrittenJob {
    std::string printer;
    std::uint64_t pages = 0;
    std::vector<std::string> lines;
};

enum class Way { Pipe, Window, Nine };

void writeEvent(LogWriter& log, Way way, const std::string& side, const std::string& event,
                unsigned handle, const std::string& reply) {
    way == Way::Pipe     ? log.pipeEvent(side, event, handle, reply)
    : way == Way::Window ? log.windowEvent(side, event, handle, reply)
                         : log.event9x(side, event, reply);
}

// `place` has pipes and windows of its own, as a printer has.
WrittenJob correctJob(Random& random, unsigned number, unsigned place, bool numbers, Way way) {
    WrittenJob job;
    job.printer = fmt::format("Printer {}", place);
    job.pages = random() % 4;
    LogWriter log([&](std::string_view line) { job.lines.emplace_back(line); });
    log.options().clock = false;
    log.options().traces = random() % 2 == 0;
    if (numbers) {
        log.options().processId = 0x1000;
        log.options().threadId = 0x2000 + number;
    }
    const unsigned dral = 0x100 + place * 16;
    const unsigned nemb = dral + 4;
    way == Way::Pipe     ? log.launchByPipe(job.printer, dral, nemb)
    : way == Way::Window ? log.launchByWindow(job.printer, dral, nemb)
                         : log.launch9x(job.printer);
    for (std::uint64_t waits = random() % 3; waits > 0; --waits) {
        writeEvent(log, way, "Dral", "OPENJOB", dral, "WAITPRINT");
    }
    writeEvent(log, way, "Dral", "OPENJOB", dral, "YESPRINT");
    writeEvent(log, way, "Nemb", "OPENJOB", nemb, "YESPRINT");
    for (std::uint64_t page = 0; page < job.pages; ++page) {
        writeEvent(log, way, "Dral", "STARTPAGE", dral, "YESPRINT");
        writeEvent(log, way, "Nemb", "STARTPAGE", nemb, "YESPRINT");
    }
    const bool nine = way == Way::Nine;
    writeEvent(log, way, nine ? "Nemb" : "Dral", "CLOSEJOB", nine ? nemb : dral, "YESPRINT");
    writeEvent(log, way, nine ? "Dral" : "Nemb", "CLOSEJOB", nine ? dral : nemb, "YESPRINT");
    return job;
}

// The lines of each job in their order, the jobs' in any; sometimes one job for a stretch.
std::string interleaved(Random& random, const std::vector<WrittenJob>& jobs) {
    std::vector<std::size_t> next(jobs.size());
    std::size_t left = 0;
    for (const WrittenJob& job : jobs) {
        left += job.lines.size();
    }
    const unsigned stretch = 2 + static_cast<unsigned>(random() % 30);
    std::string text;
    std::size_t now = 0;
    for (unsigned time = 0; left > 0; ++time) {
        while (next[now] == jobs[now].lines.size() || random() % stretch == 0) {
            now = random() % jobs.size();
        }
        text += fmt::format("2024/03/07-00:00:{:02}.{:03} {}", time / 1000, time % 1000,
                            jobs[now].lines[next[now]++]);
        --left;
    }
    return text;
}

std::vector<WrittenJob> someJobs(Random& random, bool numbers, bool ownPlaces) {
    std::vector<WrittenJob> jobs;
    const auto way = static_cast<Way>(random() % 3);
    const unsigned count = 2 + static_cast<unsigned>(random() % 6);
    for (unsigned number = 0; number < count; ++number) {
        const bool own = ownPlaces || way == Way::Pipe;
        jobs.push_back(correctJob(random, number, own ? number : 0, numbers, way));
    }
    return jobs;
}

TEST(Interleaved, JobsWithNumbersAreTheJobsThatWereWritten) {
    for (unsigned seed = 1; seed <= 500; ++seed) {
        Random random(seed);
        const std::vector<WrittenJob> written = someJobs(random, true, true);
        const Reading reading = readHere(interleaved(random, written));
        ASSERT_EQ(reading.jobs.size(), written.size()) << seed;
        std::map<std::string, std::uint64_t> pages;
        for (const log::Job& job : reading.jobs) {
            pages[job.printer] = job.pages;
            EXPECT_EQ(job.result(), log::JobEnd::Printed) << seed;
            EXPECT_TRUE(job.findings.empty())
                << seed << ": " << log::textOf(job.findings.front().id).name;
        }
        for (const WrittenJob& job : written) {
            EXPECT_EQ(pages.at(job.printer), job.pages) << seed;
        }
    }
}

// What was sound stays sound: a line that may have been another job's makes no problem.
TEST(Interleaved, JobsWithoutNumbersGetNoProblemThatNoneOfThemHad) {
    for (unsigned seed = 1; seed <= 5000; ++seed) {
        Random random(seed);
        const std::vector<WrittenJob> written = someJobs(random, false, seed % 2 == 0);
        // Much later, so that what seems to be under way still seems to hang.
        const std::string end = "2024/03/07-01:00:00.000 DEMODRAL   a line of a companion\r\n";
        const Reading reading = readHere(interleaved(random, written) + end);
        for (const log::Job& job : reading.jobs) {
            EXPECT_NE(job.weight(), log::Weight::Problem)
                << seed << ": " << log::textOf(job.firstFailure()->id).name << " "
                << job.firstFailure()->line;
        }
        EXPECT_FALSE(reading.summary.hasProblems()) << seed;
    }
}

TEST(Interleaved, LaunchedJobsWithPipesAreToldApartByThem) {
    unsigned exact = 0;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        Random random(seed);
        std::vector<WrittenJob> written;
        std::string launches;
        for (unsigned number = 0; number < 2; ++number) {
            WrittenJob job = correctJob(random, number, number, false, Way::Pipe);
            const auto launched =
                std::find_if(job.lines.begin(), job.lines.end(), [](const std::string& line) {
                    return line.find("rc = TRUE from VOKLaunchXFiles") != std::string::npos;
                });
            for (auto line = job.lines.begin(); line <= launched; ++line) {
                launches += "2024/03/07-00:00:00.000 " + *line;
            }
            job.lines.erase(job.lines.begin(), launched + 1);
            written.push_back(job);
        }
        const Reading reading = readHere(launches + interleaved(random, written));
        ASSERT_EQ(reading.jobs.size(), 2u);
        bool all = true;
        for (const log::Job& job : reading.jobs) {
            const WrittenJob& same = written[job.printer == written[0].printer ? 0 : 1];
            all = all && job.result() == log::JobEnd::Printed && job.pages == same.pages;
        }
        exact += all ? 1 : 0;
    }
    EXPECT_GT(exact, 150u);
}

}  // namespace
}  // namespace vok::test
