// Real logs with their bytes, lines, order and encoding damaged: whatever comes in, what goes out
// keeps its promises.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "in_process.h"
#include "json_output.h"
#include "support.h"

namespace vok::test {
namespace {

constexpr unsigned inputs = 20000;

std::vector<std::string> realLogs() {
    std::vector<std::string> logs;
    for (const char* name : {"message", "pipe", "nine", "refused", "busy", "die"}) {
        logs.push_back(readFile(dataFile(std::string(name) + ".log")));
    }
    return logs;
}

std::vector<std::string> linesIn(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

// Always the same for the same number, so that a failure comes again.
class Damage {
  public:
    explicit Damage(unsigned number) : random_(number) {}

    std::string on(const std::vector<std::string>& logs) {
        std::vector<std::string> lines = linesIn(logs[below(logs.size())]);
        const std::vector<std::string> others = linesIn(logs[below(logs.size())]);
        for (std::size_t i = below(12); i > 0 && !lines.empty(); --i) {
            damageLines(lines, others);
        }
        const auto first = static_cast<std::ptrdiff_t>(below(lines.size() + 1));
        std::string text = std::accumulate(lines.begin() + first, lines.end(), std::string());
        for (std::size_t i = below(6); i > 0 && !text.empty(); --i) {
            damageBytes(text);
        }
        return inSomeEncoding(text);
    }

  private:
    std::size_t below(std::size_t end) { return end == 0 ? 0 : random_() % end; }

    void damageLines(std::vector<std::string>& lines, const std::vector<std::string>& others) {
        const auto at = static_cast<std::ptrdiff_t>(below(lines.size()));
        const auto to = static_cast<std::ptrdiff_t>(below(lines.size()));
        switch (below(5)) {
            case 0:
                lines.erase(lines.begin() + std::min(at, to), lines.begin() + std::max(at, to));
                break;
            case 1:
                std::swap(lines[static_cast<std::size_t>(at)], lines[static_cast<std::size_t>(to)]);
                break;
            case 2:
                std::rotate(lines.begin(), lines.begin() + at, lines.end());
                break;
            case 3:
                lines.insert(lines.begin() + at, others.begin(), others.end());
                break;
            default:
                lines.insert(lines.begin() + at, lines[static_cast<std::size_t>(to)]);
        }
    }

    void damageBytes(std::string& text) {
        const std::size_t at = below(text.size());
        switch (below(3)) {
            case 0:
                text.erase(at, below(40));
                break;
            case 1:
                text[at] = static_cast<char>(random_() % 256);
                break;
            default:
                text.insert(at, text.substr(below(text.size()), below(100)));
        }
    }

    std::string inSomeEncoding(const std::string& text) {
        const std::size_t kind = below(8);
        if (kind > 2) {
            return text;
        }
        std::string out = kind == 0 ? "\xEF\xBB\xBF" : kind == 1 ? "\xFF\xFE" : "\xFE\xFF";
        for (const char byte : text) {
            out += kind == 2 ? std::string(1, '\0') : "";
            out += byte;
            out += kind == 1 ? std::string(1, '\0') : "";
        }
        return out;
    }

    std::minstd_rand random_;
};

// Of this process, in KiB.
long peakMemory() {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_maxrss;
}

void expectPromises(const Reading& reading) {
    const log::Summary& summary = reading.summary;
    EXPECT_EQ(summary.jobs, reading.jobs.size());
    EXPECT_EQ(std::accumulate(summary.jobEnds.begin(), summary.jobEnds.end(), std::uint64_t{0}),
              summary.jobs);
    for (const log::Job& job : reading.jobs) {
        const auto& times = job.time.all();
        const std::int64_t sum = std::accumulate(times.begin(), times.end(), std::int64_t{0});
        if (job.time.known()) {
            EXPECT_EQ(job.duration(), sum);
        }
        EXPECT_GE(*std::min_element(times.begin(), times.end()), 0);
        std::uint64_t listed = 0;
        job.exchanges.forEach([&](const log::Exchange&) { ++listed; },
                              [&](const log::ExchangeGap& gap) { listed += gap.count; });
        EXPECT_EQ(listed, job.exchanges.size());
        EXPECT_TRUE(log::JsonValue::accept(log::toLine(log::toJson(job, summary.files))));
    }
}

TEST(Fuzz, DamagedLogsBreakNoPromise) {
    const std::vector<std::string> logs = realLogs();
    long memory = 0;
    for (unsigned number = 1; number <= inputs; ++number) {
        expectPromises(readHere(Damage(number).on(logs)));
        ASSERT_FALSE(testing::Test::HasFailure()) << "input " << number;
        memory = number == inputs / 10 ? peakMemory() : memory;
    }
    constexpr long megabytes = 1024;
    EXPECT_LT(peakMemory(), memory + 8 * megabytes);
}

}  // namespace
}  // namespace vok::test
