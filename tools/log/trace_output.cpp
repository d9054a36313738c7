#include "trace_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vok::log {

namespace {

constexpr std::int64_t microseconds = 1000;

std::uint32_t processOf(const Job& job) {
    return job.processId.value_or(0);
}

// Lane 0 would be taken for the idle thread by some viewers.
std::uint32_t laneOf(const Job& job) {
    return job.lane + 1;
}

std::string nameOf(const Job& job) {
    return fmt::format("job {} {}: {}", job.number, job.printer, toText(job.result()));
}

}  // namespace

TraceOutput::TraceOutput(Writer& writer) : writer_(writer) {
    writer_.write("{\"displayTimeUnit\": \"ms\", \"traceEvents\": [");
}

TraceOutput::Span TraceOutput::spanOf(Time start, Time end, std::uint64_t firstLine,
                                      std::uint64_t lastLine) {
    if (start == noTime) {
        const auto placeOf = [&](std::uint64_t line) {
            const std::uint64_t behind = line - std::min(line, lastTimeLine_);
            return (lastTime_ + static_cast<std::int64_t>(behind)) * microseconds;
        };
        return {placeOf(firstLine), placeOf(std::max(lastLine, firstLine)) - placeOf(firstLine)};
    }
    lastTime_ = start;
    lastTimeLine_ = firstLine;
    return {start * microseconds, between(start, end).value_or(0) * microseconds};
}

void TraceOutput::write(const JsonValue& event) {
    writer_.write((first_ ? "\n" : ",\n") + toLine(event));
    first_ = false;
}

void TraceOutput::nameLane(const Job& job) {
    if (laneEnds_.size() >= maxLanes) {
        laneEnds_.clear();  // and named again
    }
    if (!laneEnds_.try_emplace({processOf(job), laneOf(job)}, INT64_MIN).second) {
        return;
    }
    const std::string process =
        job.processId ? fmt::format("process {:04x}", *job.processId) : "print processor";
    write({{"name", "process_name"},
           {"ph", "M"},
           {"pid", processOf(job)},
           {"tid", laneOf(job)},
           {"args", {{"name", process}}}});
    write({{"name", "thread_name"},
           {"ph", "M"},
           {"pid", processOf(job)},
           {"tid", laneOf(job)},
           {"args", {{"name", fmt::format("jobs, lane {}", laneOf(job))}}}});
}

void TraceOutput::write(const Job& job, const Slice& slice) {
    write({{"name", slice.name},
           {"cat", slice.kind},
           {"ph", "X"},
           {"ts", slice.span.start},
           {"dur", slice.span.duration},
           {"pid", processOf(job)},
           {"tid", laneOf(job)},
           {"args", slice.details}});
}

// The launch and the events.
std::vector<TraceOutput::Slice> TraceOutput::partsOf(const Job& job) {
    std::vector<Slice> parts;
    const Launch& launch = job.launch;
    if (launch.result != LaunchResult::Missing) {
        parts.push_back({fmt::format("launch: {}", toText(launch.result)),
                         "launch",
                         spanOf(launch.start, launch.end, launch.firstLine, launch.lastLine),
                         {{"attempts", launch.attempts}}});
    }
    job.exchanges.forEach(
        [&](const Exchange& exchange) {
            const std::string name =
                fmt::format("{} {} {}", toText(exchange.side),
                            exchange.ownMessage ? "message" : toText(exchange.event),
                            exchange.reply ? replyText(exchange.reply) : toText(exchange.delivery));
            parts.push_back(
                {name, "event",
                 spanOf(exchange.start, exchange.end, exchange.firstLine, exchange.lastLine),
                 toJson(job, exchange)});
        },
        [&](const ExchangeGap& gap) {
            parts.push_back({fmt::format("{} events", gap.count), "gap",
                             spanOf(gap.start, gap.end, gap.firstLine, gap.lastLine),
                             toJson(job, gap)});
        });
    return parts;
}

TraceOutput::Slice TraceOutput::wholeOf(const Job& job) {
    const Finding* first = job.firstFailure();
    return {nameOf(job),
            "job",
            spanOf(job.start, job.end, job.firstLine, job.lastLine),
            {{"printer", job.printer},
             {"port", job.port},
             {"result", resultText(job)},
             {"time", toJson(job.time)},
             {"pages", job.pages},
             {"lines", {job.firstLine, job.lastLine}},
             {"dral", fmt::format("{}, {}", toText(job.dral.route), toText(job.dral.origin))},
             {"nemb", fmt::format("{}, {}", toText(job.nemb.route), toText(job.nemb.origin))},
             {"firstFailure",
              first == nullptr ? JsonValue(nullptr) : JsonValue(textOf(first->id).name)}}};
}

// One behind the other and all inside the job, each with some length: where slices begin and end in
// the same moment, viewers don't agree on which stands in which.
void TraceOutput::job(const Job& job) {
    nameLane(job);
    Slice whole = wholeOf(job);
    std::vector<Slice> parts = partsOf(job);
    std::int64_t& laneEnd = laneEnds_[{processOf(job), laneOf(job)}];
    const std::int64_t end = whole.span.start + whole.span.duration;
    whole.span.start = std::max(whole.span.start, laneEnd);
    std::int64_t behind = whole.span.start;
    for (Slice& part : parts) {
        const std::int64_t partEnd = part.span.start + part.span.duration;
        part.span.start = std::max(part.span.start, behind);
        behind = std::max(partEnd, part.span.start + 1);
        part.span.duration = behind - part.span.start;
    }
    laneEnd = std::max({end, behind, whole.span.start + 1});
    whole.span.duration = laneEnd - whole.span.start;
    write(job, whole);
    for (const Slice& part : parts) {
        write(job, part);
    }
    if (const Finding* first = job.firstFailure()) {
        const FindingText& text = textOf(first->id);
        const Span place = spanOf(job.end, job.end, job.lastLine, job.lastLine);
        write({{"name", text.title},
               {"cat", toText(text.weight)},
               {"ph", "i"},
               {"s", "t"},
               {"ts", place.start},
               {"pid", processOf(job)},
               {"tid", laneOf(job)},
               {"args",
                {{"message", text.name}, {"line", first->line}, {"page", pageOf(first->id)}}}});
    }
}

void TraceOutput::finish(const Summary& summary) {
    writer_.write("\n], \"otherData\": " + toLine(toJson(summary)) + "}\n");
}

}  // namespace vok::log
