#include "html_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
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

JsonValue eventForPage(const Exchange& exchange) {
    JsonValue event = toJson(exchange);
    event["start"] = placeOf(exchange.start, exchange.firstLine);
    event["end"] = std::max(placeOf(exchange.start, exchange.firstLine),
                            placeOf(exchange.end, exchange.lastLine));
    event.erase("durationMs");
    return event;
}

JsonValue failureForPage(const Finding& finding) {
    const FindingText& text = textOf(finding.id);
    return {{"message", text.name},
            {"title", text.title},
            {"line", finding.line},
            {"page", pageOf(finding.id)}};
}

std::string describe(const Companion& companion) {
    const std::string start = toText(companion.start);
    return fmt::format("{}, {}{}{}", toText(companion.route), toText(companion.origin),
                       start.empty() ? "" : " ", start);
}

JsonValue jobForPage(const Job& job) {
    JsonValue events = JsonValue::array();
    job.exchanges.forEach(
        [&](const Exchange& exchange) { events.push_back(eventForPage(exchange)); });
    JsonValue lines = JsonValue::array();
    job.lines.forEach(
        [&](const JobLine& line) { lines.push_back(JsonValue::array({line.number, line.text})); });
    const Launch& launch = job.launch;
    JsonValue launchSpan = nullptr;
    if (launch.result != LaunchResult::Missing) {
        launchSpan = {{"start", placeOf(launch.start, launch.firstLine)},
                      {"end", placeOf(launch.end, launch.lastLine)}};
    }
    const Finding* first = job.firstFailure();
    const Duration duration = job.duration();
    return {{"job", job.number},
            {"file", job.file},
            {"timed", job.start != noTime},
            {"printer", job.printer},
            {"start", placeOf(job.start, job.firstLine)},
            {"end", placeOf(job.end, job.lastLine)},
            {"durationMs", duration ? JsonValue(*duration) : JsonValue(nullptr)},
            {"result", toText(job.result())},
            {"weight", toText(job.weight())},
            {"pages", job.pages},
            {"dral", describe(job.dral)},
            {"nemb", describe(job.nemb)},
            {"firstLine", job.firstLine},
            {"lastLine", job.lastLine},
            {"launch", std::move(launchSpan)},
            {"failure", first == nullptr ? JsonValue(nullptr) : failureForPage(*first)},
            {"events", std::move(events)},
            {"lines", std::move(lines)},
            {"linesOmitted", job.lines.omitted()}};
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

void JobStrip::add(std::int64_t time, bool problem) {
    if (empty_) {
        start_ = time;
        empty_ = false;
    }
    while (time < start_) {
        growLeft();
    }
    while (time >= start_ + static_cast<std::int64_t>(size) * width_) {
        growRight();
    }
    Count& count = counts_[static_cast<std::size_t>((time - start_) / width_)];
    ++count.total;
    count.problems += problem ? 1 : 0;
}

// Every two neighbours become one; the other half is free.
void JobStrip::growRight() {
    for (std::size_t i = 0; i < size; ++i) {
        Count merged;
        if (i < size / 2) {
            merged = {counts_[2 * i].total + counts_[2 * i + 1].total,
                      counts_[2 * i].problems + counts_[2 * i + 1].problems};
        }
        counts_[i] = merged;
    }
    width_ *= 2;
}

void JobStrip::growLeft() {
    start_ -= static_cast<std::int64_t>(size) * width_;
    growRight();
    std::rotate(counts_.begin(), counts_.begin() + size / 2, counts_.end());
}

JsonValue JobStrip::toJson() const {
    JsonValue total = JsonValue::array();
    JsonValue problems = JsonValue::array();
    for (const Count& count : counts_) {
        total.push_back(count.total);
        problems.push_back(count.problems);
    }
    return {{"start", start_},
            {"width", width_},
            {"total", std::move(total)},
            {"problems", std::move(problems)}};
}

HtmlOutput::HtmlOutput(Writer& writer, std::size_t maxJobs, bool problemsOnly)
    : writer_(writer), maxJobs_(maxJobs), problemsOnly_(problemsOnly) {}

bool HtmlOutput::full() const {
    return problems_.size() + others_.size() >= maxJobs_ || bytes_ >= maxBytes;
}

void HtmlOutput::job(const Job& job) {
    const bool problem = job.weight() == Weight::Problem;
    clock_ = clock_ || job.start != noTime;
    byLine_.add(static_cast<std::int64_t>(job.firstLine), problem);
    if (job.start != noTime) {
        byTime_.add(job.start, problem);
    }
    if (problemsOnly_ && !wentWrong(job)) {
        return;
    }
    while (full() && !others_.empty()) {
        bytes_ -= others_.front().size();
        others_.pop_front();
        ++leftOut_;
    }
    if (full()) {
        ++leftOut_;
        problemsLeftOut_ += problem ? 1 : 0;
        return;
    }
    std::string text = escaped(toLine(jobForPage(job)));
    bytes_ += text.size();
    (problem ? problems_ : others_).push_back(std::move(text));
}

std::string HtmlOutput::limitText(const Summary& summary) const {
    if (leftOut_ == 0) {
        return problemsOnly_ ? "Only jobs in which something went wrong are shown." : "";
    }
    const std::string which =
        problemsLeftOut_ == 0
            ? fmt::format("all {} with a problem, and the latest of the others",
                          grouped(problems_.size()))
            : fmt::format("the first {} of {} with a problem", grouped(problems_.size()),
                          grouped(problems_.size() + problemsLeftOut_));
    return fmt::format(
        "The picture and the list show {} of {} jobs: {}. The counts, the messages and the strip "
        "above the picture are of all of them.",
        grouped(problems_.size() + others_.size()), grouped(summary.jobs), which);
}

void HtmlOutput::writeData(const Summary& summary) {
    JsonValue files = JsonValue::array();
    for (const std::string& file : summary.files) {
        files.push_back(toUtf8(file));
    }
    const JsonValue head = {{"files", std::move(files)},
                            {"clock", clock_},
                            {"limit", limitText(summary)},
                            {"summary", toJson(summary)},
                            {"strip", (clock_ ? byTime_ : byLine_).toJson()}};
    std::string text = escaped(toLine(head));
    text.pop_back();
    writer_.write(text + ", \"jobs\": [");
    bool first = true;
    for (const auto* jobs : {&problems_, &others_}) {
        for (const std::string& line : *jobs) {
            writer_.write(first ? "\n" : ",\n");
            writer_.write(line);
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
