#include "big_log.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

namespace {

constexpr unsigned threads = 6;

// The job's lines, to be mixed with those of the other threads.
std::vector<std::string> jobLines(std::uint64_t number, std::int64_t time) {
    std::vector<std::string> lines;
    LogWriter log([&](std::string_view line) { lines.emplace_back(line); });
    log.options().processId = 0x1000 + number % 2;
    log.options().threadId = 0x2000 + number % threads;
    log.options().clock = number % 50 != 49;
    log.setTime(time);
    const bool refused = number % 10 == 3;
    log.pipeJob(fmt::format("Printer {}", number % 7),
                static_cast<unsigned>(0x100 + number % threads * 16), static_cast<int>(number % 4),
                refused ? "NOPRINT" : "YESPRINT");
    return lines;
}

void writeNoise(const LogWriter::Out& out, std::uint64_t number) {
    switch (number % 40) {
        case 7:
            return out("2024/03/07-09:\r\n");
        case 17:
            return out("disk check finished\r\n");
        case 27:
            return out("2024/03/07-09:05:01.042 pid=1000 DEMODRAL   a line of a companion\r\n");
        case 37:
            return out("2024/03/07-09:05:01.042 VOK        a text of another version\r\n");
        default:
            return;
    }
}

}  // namespace

void writeBigLog(const LogWriter::Out& out, std::uint64_t lines) {
    std::uint64_t written = 0;
    const LogWriter::Out counted = [&](std::string_view line) {
        ++written;
        out(line);
    };
    std::uint64_t number = 0;
    while (written < lines) {
        std::vector<std::vector<std::string>> jobs;
        for (unsigned thread = 0; thread < threads; ++thread) {
            jobs.push_back(jobLines(number + thread, static_cast<std::int64_t>(number) * 100));
        }
        bool more = true;
        for (std::size_t line = 0; more; ++line) {
            more = false;
            for (const auto& job : jobs) {
                if (line < job.size()) {
                    counted(job[line]);
                    more = true;
                }
            }
        }
        for (unsigned thread = 0; thread < threads; ++thread) {
            writeNoise(counted, number + thread);
        }
        number += threads;
    }
}

}  // namespace vok::test
