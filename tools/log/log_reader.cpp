#include "log_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text.h"

namespace vok::log {

namespace {

// Milliseconds that records may be out of order: the clock is read before the file's lock is had
// in other programs.
constexpr std::int64_t clockTolerance = 1000;
constexpr std::uint64_t linesPerReport = 4096;

}  // namespace

LogReader::LogReader(const ReaderOptions& options, Sink& sink,
                     std::function<void(const Progress&)> progress)
    : options_(options),
      sink_(sink),
      progress_(std::move(progress)),
      assembler_(options, summary_, sink) {}

Summary LogReader::read(const std::vector<std::string>& files) {
    begin(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        LogInput input(files[i]);
        before_ = options_.joined ? before_ : noTime;
        beginFile(i);
        readLines(input);
        if (input.damaged()) {
            summary_.note(FindingId::FileDamaged, i, line_);
        }
        if (const std::string why = whyNoLog(); !why.empty()) {
            summary_.notLogs.emplace_back(files[i], why);
        }
        if (!options_.joined && i + 1 < files.size()) {
            assembler_.endLog(before_);
        }
    }
    return end(0);
}

Summary LogReader::end(std::int64_t idle) {
    assembler_.endLog(before_, idle);
    sink_.finish(summary_);
    return summary_;
}

void LogReader::beginFile(std::size_t file) {
    file_ = file;
    line_ = 0;
    logLines_ = 0;
    assembler_.beginFile(file);
}

bool LogReader::readLines(LogInput& input) {
    const std::uint64_t before = line_;
    while (const std::optional<InputLine> line = input.next()) {
        ++line_;
        ++summary_.lines;
        takeLine(line->text, line->whole);
        if (line_ % linesPerReport == 0) {
            progress_({file_, input.position(), input.size(), summary_.lines});
        }
    }
    progress_({file_, input.position(), input.size(), summary_.lines});
    return line_ > before;
}

std::string LogReader::whyNoLog() const {
    return logLines_ > 0 ? std::string()
           : line_ == 0  ? "it is empty"
                         : fmt::format("none of its {} lines is a record", line_);
}

void LogReader::takeLine(std::string_view text, bool whole) {
    while (!text.empty()) {
        const Line line = parseLine(text);
        // A record that reaches to a missing line end may be cut.
        const bool cut = !whole && line.rest.empty();
        if (line.kind == LineKind::Foreign) {
            summary_.note(FindingId::ForeignLines, file_, line_);
        } else if (line.kind == LineKind::Torn || cut) {
            summary_.note(FindingId::TornLines, file_, line_);
        } else {
            takeRecord(line.record);
        }
        text = line.rest;
    }
}

void LogReader::takeRecord(const Record& record) {
    ++summary_.records;
    if (record.time == noTime) {
        summary_.note(FindingId::NoClock, file_, line_);
    } else {
        if (before_ != noTime && record.time + clockTolerance < before_) {
            summary_.note(FindingId::ClockBack, file_, line_);
        }
        before_ = record.time;
        const bool first = summary_.firstTime == noTime;
        summary_.firstTime = first ? record.time : std::min(summary_.firstTime, record.time);
        summary_.lastTime = std::max(summary_.lastTime, record.time);
    }
    logLines_ += record.time != noTime || record.isOwn() ? 1 : 0;
    if (!record.isOwn()) {
        ++countsFor(summary_.categories, toUtf8(record.category)).total;
        return;
    }
    ++summary_.ownRecords;
    assembler_.add(record, line_);
}

}  // namespace vok::log
