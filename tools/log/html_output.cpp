#include "html_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "text.h"
#include "timeline_parts.h"

namespace vok::log {

namespace {

// Where the picture has something: by the clock, or by lines.
std::int64_t placeOf(Time time, std::uint64_t line) {
    return time == noTime ? static_cast<std::int64_t>(line) : time;
}

// What says nothing is not written: a page of many jobs is to stay small.
JsonValue concise(JsonValue object, std::initializer_list<const char*> unused = {}) {
    for (const char* name : unused) {
        object.erase(name);
    }
    for (auto member = object.begin(); member != object.end();) {
        member = member->is_null() || *member == 0 ? object.erase(member) : std::next(member);
    }
    return object;
}

// Places are counted from the job's, and are there where a time is missing.
template <typename Span>
JsonValue placesOf(const Job& job, const Span& span, JsonValue value) {
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
    JsonValue event = toJson(job, exchange);
    const bool answered = exchange.delivery == Delivery::Answered;
    const JsonValue time = event["answerMs"];
    event = concise(std::move(event),
                    {"durationMs", "route", "asks", "waits", answered ? "delivery" : ""});
    event["answerMs"] = time;
    return placesOf(job, exchange, std::move(event));
}

JsonValue launchForPage(const Job& job) {
    const Launch& launch = job.launch;
    if (launch.result == LaunchResult::Missing) {
        return nullptr;
    }
    return placesOf(job, launch,
                    {{"result", toText(launch.result)},
                     {"firstLine", launch.firstLine},
                     {"lastLine", launch.lastLine}});
}

JsonValue gapForPage(const Job& job, const ExchangeGap& gap) {
    return placesOf(job, gap, concise(toJson(job, gap), {"fromMs", "toMs"}));
}

JsonValue failureForPage(const Finding& finding) {
    const FindingText& text = textOf(finding.id);
    JsonValue failure = {{"message", text.name}, {"title", text.title}, {"line", finding.line}};
    if (finding.side != Side::None) {
        failure["companion"] = toText(finding.side);
    }
    return failure;
}

std::string describe(const Companion& companion) {
    const std::string start = toText(companion.start);
    return fmt::format("{}, {}{}{}", toText(companion.route), toText(companion.origin),
                       start.empty() ? "" : " ", start);
}

JsonValue jobForPage(const Job& job) {
    JsonValue events = listEvents(
        job, [&](const Exchange& exchange) { return eventForPage(job, exchange); },
        [&](const ExchangeGap& gap) { return gapForPage(job, gap); });
    const Finding* first = job.firstFailure();
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
         {"durationMs", durationToJson(job.duration())},
         {"result", result},
         {"resultText", told == result ? JsonValue(nullptr) : JsonValue(told)},
         {"silentMs", job.atLogEnd ? durationToJson(job.silent) : JsonValue(nullptr)},
         {"jump", jump ? JsonValue({{"line", jump->line}, {"ms", jump->ms}}) : JsonValue(nullptr)},
         {"time", job.time.known() ? concise(toJson(job.time)) : JsonValue(nullptr)},
         {"weight", toText(job.weight())},
         {"pages", job.pages},
         {"dral", describe(job.dral)},
         {"nemb", describe(job.nemb)},
         {"firstLine", job.firstLine},
         {"lastLine", job.lastLine},
         {"launch", launchForPage(job)},
         {"failure", first == nullptr ? JsonValue(nullptr) : failureForPage(*first)},
         {"events", std::move(events)}});
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
        if (character == '<') {
            safe += "\\u003c";
        } else {
            safe += character;
        }
    }
    return safe;
}

}  // namespace

HtmlOutput::HtmlOutput(Writer& writer, std::size_t maxJobs, bool problemsOnly)
    : writer_(writer), maxJobs_(maxJobs), problemsOnly_(problemsOnly) {}

void HtmlOutput::job(const Job& job) {
    clock_ = clock_ || job.start != noTime;
    if (problemsOnly_ && !wentWrong(job)) {
        return;
    }
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

// First go the log lines of the oldest jobs without a problem, then these jobs, and at last the
// latest ones with a problem.
void HtmlOutput::makeRoom() {
    for (; bytes_ > maxBytes && withoutLines_ < others_.size(); ++withoutLines_) {
        PageJob& oldest = others_[withoutLines_];
        bytes_ -= oldest.lines.size();
        oldest.lines.clear();
        oldest.linesLeftOut = oldest.lineCount;
    }
    const auto tooMany = [&] {
        return problems_.size() + others_.size() > maxJobs_ || bytes_ > maxBytes;
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

std::string HtmlOutput::limitText(const Summary& summary) const {
    std::string text = problemsOnly_ ? "Only jobs in which something went wrong are shown. " : "";
    if (leftOut_ > 0) {
        const std::string which =
            problemsLeftOut_ == 0
                ? fmt::format("all {} with a problem, and the latest of the others",
                              grouped(problems_.size()))
                : fmt::format("the first {} of {} with a problem", grouped(problems_.size()),
                              grouped(problems_.size() + problemsLeftOut_));
        text += fmt::format(
            "The picture and the list show {} of {} jobs: {}. The counts and the messages are of "
            "all of them. ",
            grouped(problems_.size() + others_.size()), grouped(summary.jobs), which);
    }
    if (withoutLines_ > 0) {
        text += fmt::format("{} of the jobs without a problem are shown without their log lines. ",
                            grouped(withoutLines_));
    }
    return text;
}

void HtmlOutput::writeData(const Summary& summary) {
    JsonValue files = JsonValue::array();
    for (const std::string& file : summary.files) {
        files.push_back(toUtf8(file));
    }
    const JsonValue head = {{"files", std::move(files)},
                            {"clock", clock_},
                            {"limit", limitText(summary)},
                            {"summary", toJson(summary)}};
    std::string text = escaped(toLine(head));
    text.pop_back();
    writer_.write(text + ", \"jobs\": [");
    bool first = true;
    for (const auto* jobs : {&problems_, &others_}) {
        for (const PageJob& shown : *jobs) {
            writer_.write(first ? "\n" : ",\n");
            const std::string lines(shown.lines.begin(), shown.lines.end());
            writer_.write(fmt::format("{},\"linesOmitted\":{},\"lines\":{}}}", shown.account,
                                      shown.linesLeftOut, lines.empty() ? "[]" : lines));
            first = false;
        }
    }
    writer_.write("\n]}");
}

void HtmlOutput::finish(const Summary& summary) {
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

}  // namespace vok::log
