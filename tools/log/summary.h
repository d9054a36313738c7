// What is known of a log as a whole: counts of a fixed size, whatever the log holds.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "job.h"

namespace vok::log {

struct EventCounts {
    std::uint64_t calls = 0;
    std::uint64_t yes = 0;
    std::uint64_t no = 0;
    std::uint64_t wait = 0;
    std::uint64_t otherReplies = 0;
    std::uint64_t notSent = 0;
    std::uint64_t undelivered = 0;
    std::uint64_t noAnswer = 0;
    std::int64_t timed = 0;  // answers whose time is known
    std::int64_t totalTime = 0;
    std::int64_t longest = 0;

    void add(const Exchange& exchange);
};

struct FindingCounts {
    std::uint64_t times = 0;
    std::uint64_t jobs = 0;
    std::uint64_t first = 0;  // jobs in which it was what failed first
    std::uint64_t mixed = 0;  // times in jobs that can't be told apart
    std::size_t file = 0;     // where it was first seen
    std::uint64_t line = 0;
    std::uint64_t job = 0;
};

struct NameCounts {
    std::uint64_t total = 0;
    std::uint64_t problems = 0;
};

// Counts by name, for as many names as there is room for; the rest share one.
using NameTable = std::map<std::string, NameCounts, std::less<>>;
NameCounts& countsFor(NameTable& table, std::string_view name);

struct Summary {
    static constexpr std::size_t ends = 7;

    std::vector<std::string> files;
    std::vector<std::pair<std::string, std::string>> notLogs;  // and why
    std::uint64_t lines = 0;
    std::uint64_t records = 0;
    std::uint64_t ownRecords = 0;  // of the library
    Time firstTime = noTime;
    Time lastTime = noTime;
    std::uint64_t jobs = 0;
    std::uint64_t jobsWithProblems = 0;
    std::uint64_t jobsWithWarnings = 0;
    std::uint64_t launches = 0;  // attempts
    std::uint64_t launchesReached = 0;
    std::uint64_t pages = 0;
    std::array<std::int64_t, TimeSplit::phases> time = {};  // of the jobs whose time is known
    std::uint64_t ownMessages = 0;
    std::array<std::uint64_t, ends> jobEnds = {};
    std::map<std::pair<Side, Event>, EventCounts> events;
    std::array<FindingCounts, 64> findings = {};
    NameTable printers;
    NameTable categories;  // of other programs in the same file

    void add(const Exchange& exchange);
    void addTime(const Exchange& exchange, std::int64_t length);
    void add(const Job& job);
    // Something about the log rather than about a job.
    void note(FindingId id, std::size_t file, std::uint64_t line, std::uint64_t times = 1,
              std::uint64_t job = 0);

    FindingCounts& at(FindingId id) { return findings[static_cast<std::size_t>(id)]; }
    const FindingCounts& at(FindingId id) const { return findings[static_cast<std::size_t>(id)]; }
    std::uint64_t at(JobEnd end) const { return jobEnds[static_cast<std::size_t>(end)]; }
    // Those that are counted there: all, or those in jobs that can't be told apart.
    bool hasProblems(std::uint64_t FindingCounts::* count = &FindingCounts::times) const;
};

}  // namespace vok::log
