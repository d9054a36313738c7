#include "log_reader.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "text.h"

namespace vok::log {

namespace {

// Milliseconds that records may be out of order: the clock is read before the file's lock is had
// in other programs.
constexpr std::int64_t clockTolerance = 1000;
constexpr std::uint64_t linesPerReport = 4096;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::duration_cast;
using std::chrono::milliseconds;

constexpr unsigned pollMicroseconds = 200000;

volatile std::sig_atomic_t interrupted = 0;

// The next one ends the program at once.
void interrupt(int signal) {
    interrupted = 1;
    static_cast<void>(std::signal(signal, SIG_DFL));
}

// How long nobody has written to the file, by the system's own times.
milliseconds ageOf(const std::string& path) {
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(path, error);
    const auto age = fs::file_time_type::clock::now() - written;
    return error ? milliseconds(0) : std::max(duration_cast<milliseconds>(age), milliseconds(0));
}

class Following {
  public:
    Following(LogReader& reader, const std::string& path) : reader_(reader), path_(path) {}

    Summary untilInterrupted() {
        reader_.begin({path_});
        for (; interrupted == 0; usleep(pollMicroseconds)) {
            look();
            reader_.tellStanding(idle());
        }
        finishFile();
        Summary summary = reader_.end(idle());
        if (!began_) {
            summary.notLogs.emplace_back(path_, "it never was there");
        } else if (const std::string why = reader_.whyNoLog(); !why.empty()) {
            summary.notLogs.emplace_back(path_, why);
        }
        return summary;
    }

  private:
    void look() {
        if (!input_ && !open()) {
            return;
        }
        // Asked first: what was written before that is still to be read.
        const bool anew = input_->beganAnew();
        if (reader_.readLines(*input_)) {
            news_ = began_ ? Clock::now() : Clock::now() - ageOf(path_);
            warnOfNoLog();
        }
        began_ = true;
        if (anew) {
            say("was renamed, deleted or emptied: reading what has its name now");
            finishFile();
        }
    }

    bool open() {
        std::error_code error;
        if (!fs::exists(path_, error)) {
            if (!std::exchange(waits_, true)) {
                say("is not there yet: waiting for it");
            }
            return false;
        }
        input_ = std::make_unique<LogInput>(path_, true);
        waits_ = false;
        reader_.beginFile(0);
        return true;
    }

    void finishFile() {
        if (input_) {
            input_->endGrowth();
            reader_.readLines(*input_);
            input_.reset();
        }
    }

    void warnOfNoLog() {
        if (const std::string why = reader_.whyNoLog(); !why.empty() && !warned_) {
            say("no log so far: " + why);
            warned_ = true;
        }
    }

    void say(const std::string& text) const {
        static_cast<void>(std::fprintf(stderr, "vok-log: %s: %s\n", path_.c_str(), text.c_str()));
    }

    std::int64_t idle() const { return duration_cast<milliseconds>(Clock::now() - news_).count(); }

    LogReader& reader_;
    const std::string& path_;
    std::unique_ptr<LogInput> input_;
    Clock::time_point news_ = Clock::now();
    bool began_ = false;
    bool waits_ = false;
    bool warned_ = false;
};

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
        const auto before = summary_.findings;
        readLines(input);
        if (const std::string why = whyNoLog(); !why.empty()) {
            summary_.notLogs.emplace_back(files[i], why);
            summary_.findings = before;  // what is said of a log's lines
            summary_.lines -= line_;
        }
        if (input.damaged()) {
            summary_.note(FindingId::FileDamaged, i, line_);
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
        Line line = parseLine(text);
        line.record.line = line_;
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
    assembler_.add(record);
}

Summary follow(LogReader& reader, const std::string& path) {
    static_cast<void>(std::signal(SIGINT, interrupt));
    static_cast<void>(std::signal(SIGTERM, interrupt));
#ifdef SIGBREAK
    static_cast<void>(std::signal(SIGBREAK, interrupt));
#endif
    return Following(reader, path).untilInterrupted();
}

}  // namespace vok::log
