#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "embedded.h"
#include "json_output.h"
#include "options.h"
#include "text.h"

namespace vok::log {

namespace {

// Where the picture has something: by the clock, or by lines.
std::int64_t placeOf(Time time, std::uint64_t line) {
    return time == noTime ? static_cast<std::int64_t>(line) : time;
}

// What says nothing is not written: a page of many jobs is to stay small.
JsonValue concise(JsonValue object, std::initializer_list<const char*> unused = {}) {
    for (const char* name : unused) {
        if (object.is_object()) {
            object.erase(name);
        }
    }
    for (auto member = object.begin(); member != object.end();) {
        member = member->is_null() || *member == 0 ? object.erase(member) : std::next(member);
    }
    return object;
}

// Places are counted from the job's, and are there where a time is missing.
JsonValue placesOf(const Job& job, const Place& span, JsonValue value) {
    const std::int64_t base = placeOf(job.start, job.firstLine);
    const auto place = [&](Time time, std::uint64_t line) {
        return (time == noTime) == (job.start == noTime) ? placeOf(time, line) - base : 0;
    };
    const std::int64_t start = place(span.start, span.firstLine);
    value["start"] = start;
    value["end"] = std::max(start, place(span.end, span.lastLine));
    return value;
}

JsonValue eventForPage(const Job& job, const Exchange& exchange) {
    const bool answered = exchange.delivery == Delivery::Answered;
    JsonValue event = concise(toJson(job, exchange),
                              {"durationMs", "route", "asks", "waits", answered ? "delivery" : ""});
    event["answerMs"] = toJson(job.answerTime(exchange));
    return placesOf(job, exchange, std::move(event));
}

JsonValue launchForPage(const Job& job) {
    JsonValue launch = toJson(job.launch);
    launch.erase("attempts");
    launch.erase("durationMs");
    return job.launch.result == LaunchResult::Missing
               ? JsonValue(nullptr)
               : placesOf(job, job.launch, std::move(launch));
}

JsonValue gapForPage(const Job& job, const ExchangeGap& gap) {
    return placesOf(job, gap, concise(toJson(job, gap), {"fromMs", "toMs"}));
}

std::string describe(const Companion& companion) {
    const std::string start = toText(companion.start);
    return fmt::format("{}, {}{}{}", toText(companion.route), toText(companion.origin),
                       start.empty() ? "" : " ", start);
}

JsonValue jobForPage(const Job& job) {
    const std::string result = toText(job.result());
    const std::string told = resultText(job);
    const std::optional<ClockJump>& jump = job.time.jump();
    return concise(
        {{"job", job.number},
         {"file", job.file},
         {"timed", job.start != noTime},
         {"printer", job.printer},
         {"start", placeOf(job.start, job.firstLine)},
         {"end", placeOf(job.end, job.lastLine)},
         {"durationMs", toJson(job.duration())},
         {"result", result},
         {"resultText", told == result ? JsonValue(nullptr) : JsonValue(told)},
         {"silentMs", toJson(job.silent)},
         {"jump", jump ? JsonValue({{"line", jump->line}, {"ms", jump->ms}}) : JsonValue(nullptr)},
         {"time", concise(timeOf(job))},
         {"weight", toText(job.weight())},
         {"pages", pagesOf(job)},
         {"dral", describe(job.dral)},
         {"nemb", describe(job.nemb)},
         {"firstLine", job.firstLine},
         {"lastLine", job.lastLine},
         {"launch", launchForPage(job)},
         {"failure", concise(failureOf(job), {"weight", "times", "page"})},
         {"events", listEvents(job, eventForPage, gapForPage)}});
}

JsonValue linesForPage(const Job& job) {
    JsonValue lines = JsonValue::array();
    job.lines.forEach(
        [&](const JobLine& line) { lines.push_back(JsonValue::array({line.number, line.text})); });
    return lines;
}

// Nothing in a script element may look like the end of it.
std::string escaped(const std::string& json) {
    std::string safe;
    safe.reserve(json.size());
    for (const char character : json) {
        safe += character == '<' ? "\\u003c" : std::string(1, character);
    }
    return safe;
}

struct PageJob {
    std::string account;     // an object that is not closed yet
    std::deque<char> lines;  // in small pieces, which leave no holes when they go
    std::uint64_t lineCount = 0;
    std::uint64_t linesLeftOut = 0;

    std::size_t bytes() const { return account.size() + lines.size(); }
};

// Keeps the jobs that the page shows: no more than it can show, those with problems first.
class HtmlOutput final : public Sink {
  public:
    HtmlOutput(Writer& writer, const Options& options) : writer_(writer), options_(options) {}

    void job(const Job& job) override {
        clock_ = clock_ || job.start != noTime;
        const std::string lines = escaped(toLine(linesForPage(job)));
        PageJob made{escaped(toLine(jobForPage(job))),
                     {lines.begin(), lines.end()},
                     job.lines.size(),
                     job.lines.omitted()};
        made.account.pop_back();
        made.account.shrink_to_fit();
        bytes_ += made.bytes();
        (job.weight() == Weight::Problem ? problems_ : others_).push_back(std::move(made));
        makeRoom();
    }

    void finish(const Summary& summary) override {
        std::string_view page = timelinePage;
        const auto upTo = [&](std::string_view mark) {
            const std::size_t position = page.find(mark);
            writer_.write(page.substr(0, position));
            page.remove_prefix(position + mark.size());
        };
        upTo("@STYLE@");
        writer_.write(timelineStyle);
        upTo("@DATA@");
        writeData(summary);
        upTo("@SCRIPT@");
        writer_.write(timelineScript);
        writer_.write(page);
    }

  private:
    // First go the log lines of the oldest jobs without a problem, then these jobs, and at last the
    // latest ones with a problem.
    void makeRoom() {
        for (; bytes_ > maxBytes && withoutLines_ < others_.size(); ++withoutLines_) {
            PageJob& oldest = others_[withoutLines_];
            bytes_ -= oldest.lines.size();
            oldest.lines.clear();
            oldest.linesLeftOut = oldest.lineCount;
        }
        const auto tooMany = [&] {
            return problems_.size() + others_.size() > options_.maxJobs || bytes_ > maxBytes;
        };
        while (tooMany() && !others_.empty()) {
            bytes_ -= others_.front().bytes();
            others_.pop_front();
            withoutLines_ -= withoutLines_ > 0 ? 1 : 0;
            ++leftOut_;
        }
        while (tooMany() && !problems_.empty()) {
            bytes_ -= problems_.back().bytes();
            problems_.pop_back();
            ++leftOut_;
            ++problemsLeftOut_;
        }
    }

    std::string limitText(const Summary& summary) const {
        std::string text =
            options_.problemsOnly ? "Only jobs in which something went wrong are shown. " : "";
        for (const auto& [file, why] : summary.notLogs) {
            text += fmt::format("{} is no log: {}. ", toUtf8(file), why);
        }
        if (leftOut_ > 0) {
            const std::string which =
                problemsLeftOut_ == 0
                    ? fmt::format("all {} with a problem, and the latest of the others",
                                  grouped(problems_.size()))
                    : fmt::format("the first {} of {} with a problem", grouped(problems_.size()),
                                  grouped(problems_.size() + problemsLeftOut_));
            text += fmt::format(
                "The picture and the list show {} of {} jobs: {}. The counts and the messages are "
                "of all of them. ",
                grouped(problems_.size() + others_.size()), grouped(summary.jobs), which);
        }
        if (withoutLines_ > 0) {
            text +=
                fmt::format("{} of the jobs without a problem are shown without their log lines. ",
                            grouped(withoutLines_));
        }
        return text;
    }

    void writeData(const Summary& summary) {
        const JsonValue head = {
            {"clock", clock_}, {"limit", limitText(summary)}, {"summary", toJson(summary)}};
        std::string text = escaped(toLine(head));
        text.pop_back();
        writer_.write(text + ", \"jobs\": [");
        const char* separator = "\n";
        for (const auto* jobs : {&problems_, &others_}) {
            for (const PageJob& shown : *jobs) {
                const std::string lines(shown.lines.begin(), shown.lines.end());
                writer_.print("{}{},\"linesOmitted\":{},\"lines\":{}}}",
                              std::exchange(separator, ",\n"), shown.account, shown.linesLeftOut,
                              lines.empty() ? "[]" : lines);
            }
        }
        writer_.write("\n]}");
    }

    // No more than so many bytes of jobs are kept, however few jobs these are: log lines go first.
    static constexpr std::size_t maxBytes = std::size_t{20} * 1024 * 1024;

    Writer& writer_;
    const Options& options_;
    bool clock_ = false;
    std::size_t bytes_ = 0;
    std::uint64_t leftOut_ = 0;
    std::uint64_t problemsLeftOut_ = 0;
    std::size_t withoutLines_ = 0;  // so many of the others
    std::deque<PageJob> problems_;
    std::deque<PageJob> others_;
};

}  // namespace

std::unique_ptr<Sink> makePage(Writer& writer, const Options& options) {
    return std::make_unique<HtmlOutput>(writer, options);
}

}  // namespace vok::log
