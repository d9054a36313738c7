#include "table_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "json_output.h"
#include "text.h"

namespace vok::log {

namespace {

constexpr std::size_t printerWidth = 24;
constexpr std::size_t textWidth = 76;

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

}  // namespace

TableOutput::TableOutput(Writer& writer, const Options& options)
    : writer_(writer), options_(options) {}

std::string TableOutput::rowOf(const std::string& file, std::span<const std::string> cells) const {
    constexpr std::size_t fileWidth = 24;
    std::string row = options_.files.size() > 1
                          ? fmt::format("{:<24}  ", shortenedBefore(file, fileWidth))
                          : std::string();
    row += fmt::format("{:>6}  {:<23}  {:>11}  {:<24}  {:<26}  {:<26}  {:>5}  {:>5}  {:<10}  {}",
                       cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], cells[6],
                       cells[7], cells[8], cells[9]);
    row.erase(row.find_last_not_of(' ') + 1);
    return row + "\n";
}

std::string TableOutput::rowOf(const Job& job) const {
    const bool mixed = job.mixed > 0;
    std::string row =
        rowOf(toUtf8(options_.files[job.file]),
              std::array<std::string, 10>{
                  fmt::to_string(job.number), job.start == noTime ? "-" : clockText(job.start),
                  tookText(job), shortened(job.printer, printerWidth),
                  mixed ? "?" : companionText(job.dral), mixed ? "?" : companionText(job.nemb),
                  mixed ? "?" : fmt::to_string(job.pages),
                  mixed ? "?" : fmt::to_string(job.dral.waits + job.nemb.waits),
                  toText(job.result()), failureText(job)});
    if (job.time.known() && (tookLong(job) || options_.wanted.slowest > 0)) {
        row += fmt::format("        {}\n", splitText(job.time.all()));
    }
    return row;
}

// A job that has ended, or hangs, is told at once in a growing log, and again when it says more.
bool TableOutput::isNews(const Job& job, const std::string& row) {
    const auto told = told_.find(job.number);
    const bool news = told == told_.end() || told->second != row;
    if (job.standing) {
        told_[job.number] = row;
    } else if (told != told_.end()) {
        told_.erase(told);
    }
    return news;
}

void TableOutput::job(const Job& job) {
    const std::string row = rowOf(job);
    if (!isNews(job, row) || (options_.problemsOnly && !wentWrong(job))) {
        return;
    }
    if (!std::exchange(headed_, true)) {
        writer_.write(rowOf(
            "FILE", std::array<std::string, 10>{"JOB", "BEGAN", "TOOK", "PRINTER", "DRAL", "NEMB",
                                                "PAGES", "WAITS", "RESULT", "WHAT FAILED FIRST"}));
    }
    writer_.write(row);
    if (options_.follow) {
        writer_.flush();
    }
}

void TableOutput::writeCounts(const Summary& summary) {
    const LineCounts& lines = summary.lines;
    writer_.write(fmt::format("{}{}: {} with problems, {} with warnings.", headed_ ? "\n" : "",
                              counted(summary.jobs, "job", "jobs"),
                              grouped(summary.jobsWithProblems),
                              grouped(summary.jobsWithWarnings)));
    for (std::size_t i = 0; i < Summary::ends; ++i) {
        if (summary.jobEnds[i] > 0) {
            writer_.write(fmt::format(" {} {}.", grouped(summary.jobEnds[i]),
                                      toText(static_cast<JobEnd>(i))));
        }
    }
    if (summary.jobsMixed > 0) {
        writer_.write(fmt::format(
            "\nmixed: {} jobs can't be told apart, turn the numbers on: vok-doctor --log on\n"
            "Which of the pages, events and times below were theirs is a guess.",
            grouped(summary.jobsMixed)));
    }
    writer_.write(fmt::format("\n{}, {} of them found or started both companions; {}.\n",
                              counted(summary.launches, "launch", "launches"),
                              grouped(summary.launchesReached),
                              counted(summary.pages, "page", "pages")));
    writer_.write(fmt::format(
        "{} lines: {} records of the library, {} of other programs, {} torn, "
        "{} foreign.\n",
        grouped(lines.lines), grouped(lines.ownRecords), grouped(lines.records - lines.ownRecords),
        grouped(lines.torn), grouped(lines.foreign)));
    if (const std::string split = splitText(summary.time); !split.empty()) {
        const char* silence = summary.jobsOpen > 0 ? "; the silence of open jobs comes on top" : "";
        writer_.write(wrapped("Time of all jobs: " + split + silence + ".", 0));
    }
    if (summary.firstTime != noTime) {
        writer_.write(fmt::format("From {} to {}.\n", clockText(summary.firstTime),
                                  clockText(summary.lastTime)));
    }
    for (const auto& [name, counts] : summary.categories.names()) {
        writer_.write(fmt::format("{} records of {}.\n", grouped(counts.total), name));
    }
}

void TableOutput::writeEvents(const Summary& summary) {
    bool headed = false;
    for (const Side side : {Side::Dral, Side::Nemb, Side::None}) {
        for (const Event event :
             {Event::Open, Event::Page, Event::Close, Event::Cancel, Event::None}) {
            const EventCounts& counts = summary.at(side, event);
            if (counts.calls == 0) {
                continue;
            }
            if (!headed) {
                writer_.write(fmt::format(
                    "\n{:<15} {:>9} {:>9} {:>8} {:>8} {:>6} {:>9} {:>10} {:>9} {:>10} {:>10}\n",
                    "EVENT", "CALLS", "YESPRINT", "NOPRINT", "WAITS", "OTHER", "NOT SENT",
                    "NOT THERE", "NO ANSWER", "MEAN", "LONGEST"));
                headed = true;
            }
            const std::int64_t timed = static_cast<std::int64_t>(counts.timed);
            writer_.write(fmt::format(
                "{:<15} {:>9} {:>9} {:>8} {:>8} {:>6} {:>9} {:>10} {:>9} {:>10} {:>10}\n",
                fmt::format("{} {}", toText(side), toText(event)), counts.calls, counts.yes,
                counts.no, counts.wait, counts.otherReplies, counts.notSent, counts.undelivered,
                counts.noAnswer, timed == 0 ? "-" : durationText(counts.totalTime / timed),
                timed == 0 ? "-" : durationText(counts.longest)));
        }
    }
}

void TableOutput::writeFinding(const FindingText& text, const FindingCounts& counts,
                               const Summary& summary) {
    const std::string head =
        fmt::format("\n{}: {} [{}]\n", toText(text.weight), text.title, text.name);
    std::string where = counted(counts.times, "time", "times");
    if (counts.jobs > 0) {
        where += ", in " + counted(counts.jobs, "job", "jobs");
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
    writer_.write(head + wrapped(where + ".", 2) + wrapped(text.meaning, 2) +
                  wrapped(text.action, 2) + "  " + pageOf(text.id) + "\n");
}

void TableOutput::writeFindings(const Summary& summary) {
    for (const Weight weight : {Weight::Problem, Weight::Warning, Weight::Note}) {
        for (const FindingText& text : findings()) {
            if (text.weight == weight && summary.at(text.id).times > 0) {
                writeFinding(text, summary.at(text.id), summary);
            }
        }
    }
}

void TableOutput::finish(const Summary& summary) {
    writeCounts(summary);
    writeEvents(summary);
    writeFindings(summary);
}

}  // namespace vok::log
