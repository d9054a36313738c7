#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "json_output.h"
#include "options.h"

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

struct Slice {
    std::string name;
    const char* kind;
    std::int64_t start;  // microseconds
    std::int64_t end;
    JsonValue details;
};

JsonValue detailsOf(const Job& job) {
    const Finding* first = job.firstFailure();
    return {{"printer", job.printer},
            {"port", job.port},
            {"result", resultText(job)},
            {"time", timeOf(job)},
            {"pages", pagesOf(job)},
            {"lines", {job.firstLine, job.lastLine}},
            {"dral", fmt::format("{}, {}", toText(job.dral.route), toText(job.dral.origin))},
            {"nemb", fmt::format("{}, {}", toText(job.nemb.route), toText(job.nemb.origin))},
            {"firstFailure",
             first == nullptr ? JsonValue(nullptr) : JsonValue(textOf(first->id).name)}};
}

std::string nameOf(const Exchange& exchange) {
    return fmt::format("{} {} {}", toText(exchange.side),
                       exchange.ownMessage ? "message" : toText(exchange.event),
                       exchange.reply ? replyText(exchange.reply) : toText(exchange.delivery));
}

// Every job is a slice in a lane of its process, with the launch and the events inside. Where the
// log has no clock a line takes the place of a millisecond, counted from the last time before it.
// Written as the log is read.
class TraceOutput final : public Sink {
  public:
    explicit TraceOutput(Writer& writer) : writer_(writer) {
        writer_.write("{\"displayTimeUnit\": \"ms\", \"traceEvents\": [");
    }

    // One behind the other and all inside the job, each with some length: where slices begin and
    // end in the same moment, viewers don't agree on which stands in which.
    void job(const Job& job) override {
        nameLane(job);
        Slice whole = sliceOf(nameOf(job), "job", job, detailsOf(job));
        std::vector<Slice> parts = partsOf(job);
        std::int64_t& laneEnd = laneEnds_[{processOf(job), laneOf(job)}];
        whole.start = std::max(whole.start, laneEnd);
        std::int64_t behind = whole.start;
        for (Slice& part : parts) {
            part.start = std::max(part.start, behind);
            part.end = behind = std::max(part.end, part.start + 1);
        }
        laneEnd = whole.end = std::max({whole.end, behind, whole.start + 1});
        write(job, whole);
        for (const Slice& part : parts) {
            write(job, part);
        }
        writeFindings(job);
    }

    void finish(const Summary& summary) override {
        writer_.write("\n], \"otherData\": " + toLine(toJson(summary)) + "}\n");
    }

  private:
    // Lanes that are remembered at once.
    static constexpr std::size_t maxLanes = 4096;

    // In microseconds.
    std::int64_t placeOf(Time time, std::uint64_t line) {
        if (time == noTime) {
            const std::uint64_t behind = line - std::min(line, lastTimeLine_);
            return (lastTime_ + static_cast<std::int64_t>(behind)) * microseconds;
        }
        lastTime_ = time;
        lastTimeLine_ = line;
        return time * microseconds;
    }

    Slice sliceOf(const std::string& name, const char* kind, const Place& place,
                  JsonValue details) {
        const std::int64_t start = placeOf(place.start, place.firstLine);
        const std::int64_t end =
            place.start == noTime
                ? placeOf(noTime, std::max(place.firstLine, place.lastLine))
                : start + between(place.start, place.end).value_or(0) * microseconds;
        return {name, kind, start, end, std::move(details)};
    }

    // The launch and the events.
    std::vector<Slice> partsOf(const Job& job) {
        std::vector<Slice> parts;
        const Launch& launch = job.launch;
        if (launch.result != LaunchResult::Missing) {
            parts.push_back(sliceOf(fmt::format("launch: {}", toText(launch.result)), "launch",
                                    launch, {{"attempts", launch.attempts}}));
        }
        job.exchanges.forEach(
            [&](const Exchange& exchange) {
                parts.push_back(
                    sliceOf(nameOf(exchange), "event", exchange, toJson(job, exchange)));
            },
            [&](const ExchangeGap& gap) {
                parts.push_back(
                    sliceOf(fmt::format("{} events", gap.count), "gap", gap, toJson(job, gap)));
            });
        return parts;
    }

    void write(const Job& job, const char* phase, JsonValue event) {
        event["ph"] = phase;
        event["pid"] = processOf(job);
        event["tid"] = laneOf(job);
        writer_.write(std::exchange(separator_, ",\n") + toLine(event));
    }

    void write(const Job& job, const Slice& slice) {
        write(job, "X",
              {{"name", slice.name},
               {"cat", slice.kind},
               {"ts", slice.start},
               {"dur", slice.end - slice.start},
               {"args", slice.details}});
    }

    void nameLane(const Job& job) {
        if (laneEnds_.size() >= maxLanes) {
            laneEnds_.clear();  // and named again
        }
        if (!laneEnds_.try_emplace({processOf(job), laneOf(job)}, INT64_MIN).second) {
            return;
        }
        const std::string process =
            job.processId ? fmt::format("process {:04x}", *job.processId) : "print processor";
        const std::string lane = fmt::format("jobs, lane {}", laneOf(job));
        write(job, "M", {{"name", "process_name"}, {"args", {{"name", process}}}});
        write(job, "M", {{"name", "thread_name"}, {"args", {{"name", lane}}}});
    }

    void writeFindings(const Job& job) {
        for (const Finding& found : job.findings) {
            const FindingText& text = textOf(found.id);
            write(job, "i",
                  {{"name", text.title},
                   {"cat", toText(text.weight)},
                   {"s", "t"},
                   {"ts", placeOf(job.end, job.lastLine)},
                   {"args",
                    {{"message", text.name}, {"line", found.line}, {"page", pageOf(found.id)}}}});
        }
    }

    Writer& writer_;
    const char* separator_ = "\n";
    std::int64_t lastTime_ = 0;       // milliseconds
    std::uint64_t lastTimeLine_ = 0;  // its line
    // By process and lane; there since the lane was named.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::int64_t> laneEnds_;
};

}  // namespace

std::unique_ptr<Sink> makeTrace(Writer& writer) {
    return std::make_unique<TraceOutput>(writer);
}

}  // namespace vok::log
