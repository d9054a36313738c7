#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "options.h"
#include "text.h"

namespace vok::log {

namespace {

constexpr std::size_t printerWidth = 24;
constexpr std::size_t textWidth = 76;
constexpr char eventRow[] =
    "{:<15} {:>9} {:>9} {:>8} {:>8} {:>6} {:>9} {:>10} {:>9} {:>10} {:>10}\n";

std::string companionText(const Companion& companion) {
    // As whom a companion was started.
    constexpr const char* starts[] = {"started", "started as user", "started as spooler",
                                      "started as host", "started as host"};
    constexpr const char* origins[] = {"-", "found", "", "FAILED"};
    const char* origin = companion.origin == Origin::Started
                             ? starts[static_cast<std::size_t>(companion.start)]
                             : origins[static_cast<std::size_t>(companion.origin)];
    return fmt::format("{} {}", toText(companion.route), origin);
}

std::string failureText(const Job& job) {
    const Finding* first = job.firstFailure();
    const std::string end = job.atLogEnd || job.mixed > 0 ? resultText(job) : std::string();
    if (first == nullptr || first->id == FindingId::JobOpen || first->id == FindingId::MixedJobs) {
        return end;
    }
    if (first->id == FindingId::JobSilent) {
        return fmt::format("{}, line {}", end, first->line);
    }
    std::string text = textOf(first->id).title;
    if (first->side != Side::None) {
        text = fmt::format("{}: {}", toText(first->side), text);
    }
    if (!first->detail.empty()) {
        text += fmt::format(" ({})", first->detail);
    }
    return fmt::format("{}{}{}, line {}", end, end.empty() ? "" : "; ", text, first->line);
}

// An open job goes on.
std::string tookText(const Job& job) {
    const Duration duration = job.duration();
    return !duration      ? "-"
           : job.atLogEnd ? durationText(*duration + job.silent.value_or(0)) + "+"
                          : durationText(*duration);
}

// Where the time went, the phases without any left out.
std::string splitText(const std::array<std::int64_t, TimeSplit::phases>& time) {
    constexpr const char* names[] = {
        "launch",           "start-up", "DRAL", "NEMB", "asked to wait", "the library's pauses",
        "between the calls"};
    std::string text;
    for (std::size_t i = 0; i < time.size(); ++i) {
        if (time[i] > 0) {
            text +=
                fmt::format("{}{} {}", text.empty() ? "" : ", ", names[i], durationText(time[i]));
        }
    }
    return text;
}

bool tookLong(const Job& job) {
    return job.has(FindingId::ManyWaits) || job.has(FindingId::LongStartup) ||
           job.has(FindingId::SlowHost) || job.has(FindingId::SlowAnswer);
}

std::string counted(std::uint64_t number, const char* one, const char* many) {
    return grouped(number) + " " + (number == 1 ? one : many);
}

// Breaks at blanks; every line begins with the same blanks.
std::string wrapped(std::string_view text, std::size_t indent) {
    std::string out;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(' '), text.size());
        if (column == 0 || column + 1 + length > textWidth) {
            out += (out.empty() ? "" : "\n") + std::string(indent, ' ');
            column = length;
        } else {
            out += ' ';
            column += 1 + length;
        }
        out += text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return out + "\n";
}

template <typename... Cells>
std::string rowOf(const Options& options, const std::string& file, const Cells&... cells) {
    constexpr std::size_t fileWidth = 24;
    std::string row = options.files.size() > 1
                          ? fmt::format("{:<24}  ", shortenedBefore(file, fileWidth))
                          : std::string();
    row += fmt::format("{:>6}  {:<23}  {:>11}  {:<24}  {:<26}  {:<26}  {:>5}  {:>5}  {:<10}  {}",
                       cells...);
    row.erase(row.find_last_not_of(' ') + 1);
    return row + "\n";
}

std::string rowOf(const Options& options, const Job& job) {
    const auto known = [&](const std::string& cell) { return job.mixed > 0 ? "?" : cell; };
    std::string row = rowOf(options, toUtf8(options.files[job.file]), job.number,
                            job.start == noTime ? "-" : clockText(job.start), tookText(job),
                            shortened(job.printer, printerWidth), known(companionText(job.dral)),
                            known(companionText(job.nemb)), known(fmt::to_string(job.pages)),
                            known(fmt::to_string(job.dral.waits + job.nemb.waits)),
                            toText(job.result()), failureText(job));
    if (job.time.known() && job.mixed == 0 && (tookLong(job) || options.slowest > 0)) {
        const std::string silence =
            job.atLogEnd && job.silent ? ", silent " + durationText(*job.silent) : std::string();
        row += fmt::format("        {}{}\n", splitText(job.time.all()), silence);
    }
    return row;
}

void writeCounts(Writer& writer, const Summary& summary) {
    writer.print("{}: {} with problems, {} with warnings.", counted(summary.jobs, "job", "jobs"),
                 grouped(summary.jobsWithProblems), grouped(summary.jobsWithWarnings));
    for (std::size_t i = 0; i < Summary::ends; ++i) {
        if (summary.jobEnds[i] > 0) {
            writer.print(" {} {}.", grouped(summary.jobEnds[i]), toText(static_cast<JobEnd>(i)));
        }
    }
    if (summary.at(JobEnd::Mixed) > 0) {
        writer.print(
            "\nmixed: {} jobs can't be told apart, turn the numbers on: vok-doctor --log on\n"
            "Which of the pages, events and times below were theirs is a guess.{}",
            grouped(summary.at(JobEnd::Mixed)),
            summary.hasProblems(&FindingCounts::mixed)
                ? " What failed in one of them is told without its number."
                : "");
    }
    writer.print("\n{}, {} of them found or started both companions; {}.\n",
                 counted(summary.launches, "launch", "launches"), grouped(summary.launchesReached),
                 counted(summary.pages, "page", "pages"));
    writer.print(
        "{} lines: {} records of the library, {} of other programs, {} torn, "
        "{} foreign.\n",
        grouped(summary.lines), grouped(summary.ownRecords),
        grouped(summary.records - summary.ownRecords),
        grouped(summary.at(FindingId::TornLines).times),
        grouped(summary.at(FindingId::ForeignLines).times));
    if (const std::string split = splitText(summary.time); !split.empty()) {
        const char* silence =
            summary.at(JobEnd::Open) > 0 ? "; the silence of open jobs comes on top" : "";
        writer.write(wrapped("Time of all jobs: " + split + silence + ".", 0));
    }
    if (summary.firstTime != noTime) {
        writer.print("From {} to {}.\n", clockText(summary.firstTime), clockText(summary.lastTime));
    }
    for (const auto& [name, counts] : summary.categories) {
        writer.print("{} of {}.\n", counted(counts.total, "record", "records"), name);
    }
}

void writeEvents(Writer& writer, const Summary& summary) {
    if (!summary.events.empty()) {
        writer.write("\n");
        writer.print(eventRow, "EVENT", "CALLS", "YESPRINT", "NOPRINT", "WAITS", "OTHER",
                     "NOT SENT", "NOT THERE", "NO ANSWER", "MEAN", "LONGEST");
    }
    for (const auto& [key, counts] : summary.events) {
        writer.print(eventRow, fmt::format("{} {}", toText(key.first), toText(key.second)),
                     counts.calls, counts.yes, counts.no, counts.wait, counts.otherReplies,
                     counts.notSent, counts.undelivered, counts.noAnswer,
                     counts.timed == 0 ? "-" : durationText(counts.totalTime / counts.timed),
                     counts.timed == 0 ? "-" : durationText(counts.longest));
    }
}

void writeFinding(Writer& writer, const FindingText& text, const FindingCounts& counts,
                  const Summary& summary) {
    writer.print("\n{}: {} [{}]\n", toText(text.weight), text.title, text.name);
    std::string where = counted(counts.times, "time", "times");
    if (counts.jobs > 0) {
        where += ", in " + counted(counts.jobs, "job", "jobs");
    }
    if (counts.mixed > 0) {
        where += fmt::format(", {} in jobs that can't be told apart", grouped(counts.mixed));
    }
    if (counts.first > 0 && text.weight != Weight::Note) {
        where += ", first failure of " + grouped(counts.first);
    }
    if (counts.line > 0) {
        where += fmt::format("; line {}", counts.line);
        if (summary.files.size() > 1) {
            where += fmt::format(" of {}", toUtf8(summary.files[counts.file]));
        }
    }
    writer.print("{}{}{}  {}\n", wrapped(where + ".", 2), wrapped(text.meaning, 2),
                 wrapped(text.action, 2), pageOf(text.id));
}

void writeFindings(Writer& writer, const Summary& summary) {
    bool quiet = true;
    for (const Weight weight : {Weight::Problem, Weight::Warning, Weight::Note}) {
        for (const FindingText& text : findings()) {
            if (text.weight == weight && summary.at(text.id).times > 0) {
                writeFinding(writer, text, summary.at(text.id), summary);
                quiet = false;
            }
        }
    }
    if (quiet && summary.jobs > 0) {
        writer.write("\nNothing went wrong between the library and the companions.\n");
    }
}

class TableOutput final : public Sink {
  public:
    TableOutput(Writer& writer, const Options& options) : writer_(writer), options_(options) {}

    void job(const Job& job) override {
        const std::string row = rowOf(options_, job);
        if (!isNews(job, row)) {
            return;
        }
        if (!std::exchange(headed_, true)) {
            writer_.write(rowOf(options_, "FILE", "JOB", "BEGAN", "TOOK", "PRINTER", "DRAL", "NEMB",
                                "PAGES", "WAITS", "RESULT", "WHAT FAILED FIRST"));
        }
        writer_.write(row);
        if (options_.follow) {
            writer_.flush();
        }
    }

    void finish(const Summary& summary) override {
        writer_.write(headed_            ? "\n"
                      : summary.jobs > 0 ? "None of the jobs is one of those asked for.\n\n"
                                         : "");
        writeCounts(writer_, summary);
        writeEvents(writer_, summary);
        writeFindings(writer_, summary);
    }

  private:
    // A job that has ended, or hangs, is told at once in a growing log, and again when it says
    // more.
    bool isNews(const Job& job, const std::string& row) {
        const auto told = told_.find(job.number);
        const bool news = told == told_.end() || told->second != row;
        if (job.standing) {
            told_[job.number] = row;
        } else if (told != told_.end()) {
            told_.erase(told);
        }
        return news;
    }

    Writer& writer_;
    const Options& options_;
    bool headed_ = false;
    std::map<std::uint64_t, std::string> told_;  // of a growing log's jobs that may go on
};

}  // namespace

std::unique_ptr<Sink> makeTable(Writer& writer, const Options& options) {
    return std::make_unique<TableOutput>(writer, options);
}

}  // namespace vok::log
