#include "json_output.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "options.h"
#include "text.h"

namespace vok::log {

namespace {

JsonValue companionToJson(const Companion& companion) {
    return {{"route", toText(companion.route)}, {"origin", toText(companion.origin)},
            {"start", toText(companion.start)}, {"handle", companion.handle},
            {"events", companion.events},       {"waits", companion.waits},
            {"answerMs", companion.answerTotal}};
}

JsonValue findingToJson(const Finding& finding, std::uint64_t times) {
    const FindingText& text = textOf(finding.id);
    return {{"message", text.name},
            {"weight", toText(text.weight)},
            {"title", text.title},
            {"companion",
             finding.side == Side::None ? JsonValue(nullptr) : JsonValue(toText(finding.side))},
            {"detail", finding.detail},
            {"line", finding.line},
            {"times", times},
            {"page", pageOf(finding.id)}};
}

JsonValue findingsToJson(const Summary& summary) {
    JsonValue list = JsonValue::array();
    for (const FindingText& text : findings()) {
        const FindingCounts& counts = summary.at(text.id);
        if (counts.times == 0) {
            continue;
        }
        list.push_back(
            {{"message", text.name},
             {"weight", toText(text.weight)},
             {"title", text.title},
             {"times", counts.times},
             {"jobs", counts.jobs},
             {"firstFailureOf", counts.first},
             {"inMixedJobs", counts.mixed},
             {"example", {{"file", counts.file}, {"line", counts.line}, {"job", counts.job}}},
             {"meaning", text.meaning},
             {"action", text.action},
             {"page", pageOf(text.id)}});
    }
    return list;
}

JsonValue eventsToJson(const Summary& summary) {
    JsonValue events = JsonValue::object();
    for (const auto& [key, counts] : summary.events) {
        events[toText(key.first)][toText(key.second)] = {{"calls", counts.calls},
                                                         {"yes", counts.yes},
                                                         {"no", counts.no},
                                                         {"wait", counts.wait},
                                                         {"otherReplies", counts.otherReplies},
                                                         {"notSent", counts.notSent},
                                                         {"undelivered", counts.undelivered},
                                                         {"noAnswer", counts.noAnswer},
                                                         {"timed", counts.timed},
                                                         {"totalMs", counts.totalTime},
                                                         {"longestMs", counts.longest}};
    }
    return events;
}

JsonValue namesToJson(const NameTable& table, const char* total) {
    JsonValue names = JsonValue::object();
    for (const auto& [name, counts] : table) {
        names[name] = {{total, counts.total}, {"problems", counts.problems}};
    }
    return names;
}

JsonValue linesToJson(const Summary& summary) {
    return {{"lines", summary.lines},
            {"records", summary.records},
            {"ownRecords", summary.ownRecords},
            {"torn", summary.at(FindingId::TornLines).times},
            {"foreign", summary.at(FindingId::ForeignLines).times},
            {"unknownTexts", summary.at(FindingId::UnknownTexts).times},
            {"withoutClock", summary.at(FindingId::NoClock).times},
            {"clockBack", summary.at(FindingId::ClockBack).times}};
}

// The phases add up to the whole.
JsonValue splitToJson(const std::array<std::int64_t, TimeSplit::phases>& time) {
    constexpr const char* names[] = {"launchMs", "startupMs", "dralMs", "nembMs",
                                     "waitMs",   "pausesMs",  "hostMs"};
    JsonValue split = JsonValue::object();
    for (std::size_t i = 0; i < time.size(); ++i) {
        split[names[i]] = time[i];
    }
    return split;
}

JsonValue fileToJson(std::size_t file, const std::vector<std::string>& files) {
    return file < files.size() ? JsonValue(toUtf8(files[file])) : JsonValue(nullptr);
}

JsonValue jumpsToJson(const std::optional<ClockJump>& jump, const std::vector<std::string>& files) {
    JsonValue jumps = JsonValue::array();
    if (jump) {
        jumps.push_back(
            {{"line", jump->line}, {"file", fileToJson(jump->file, files)}, {"ms", jump->ms}});
    }
    return jumps;
}

JsonValue eventInFile(const Job& job, const Exchange& exchange,
                      const std::vector<std::string>& files) {
    JsonValue event = toJson(job, exchange);
    if (files.size() > 1) {
        event["file"] = fileToJson(exchange.file, files);
    }
    return event;
}

// An object with "jobs", one a line and written as soon as each is over, and "summary".
class JsonOutput final : public Sink {
  public:
    JsonOutput(Writer& writer, const Options& options) : writer_(writer), options_(options) {
        writer_.write("{\"format\": \"vok-log\", \"version\": 1, \"jobs\": [");
    }

    void job(const Job& job) override {
        writer_.write(std::exchange(separator_, ",\n") + toLine(toJson(job, options_.files)));
    }

    void finish(const Summary& summary) override {
        writer_.write("\n], \"summary\": " + toLine(toJson(summary)) + "}\n");
    }

  private:
    Writer& writer_;
    const Options& options_;
    const char* separator_ = "\n";
};

}  // namespace

std::string toLine(const JsonValue& value) {
    return value.dump(-1, ' ', false, JsonValue::error_handler_t::replace);
}

JsonValue timeToJson(Time time) {
    return time == noTime ? JsonValue(nullptr) : JsonValue(clockText(time));
}

JsonValue toJson(const Launch& launch) {
    return {{"result", toText(launch.result)},
            {"attempts", launch.attempts},
            {"start", timeToJson(launch.start)},
            {"durationMs", toJson(between(launch.start, launch.end))},
            {"firstLine", launch.firstLine},
            {"lastLine", launch.lastLine}};
}

JsonValue failureOf(const Job& job) {
    const Finding* first = job.firstFailure();
    return first == nullptr ? JsonValue(nullptr) : findingToJson(*first, job.times(first->id));
}

JsonValue toJson(const Job& job, const Exchange& exchange) {
    return {{"companion", toText(exchange.side)},
            {"event", exchange.ownMessage ? "message" : toText(exchange.event)},
            {"route", toText(exchange.route)},
            {"delivery", toText(exchange.delivery)},
            {"reply", exchange.reply ? JsonValue(replyText(exchange.reply)) : JsonValue(nullptr)},
            {"asks", exchange.asks},
            {"waits", exchange.waits},
            {"start", timeToJson(exchange.start)},
            {"answerMs", toJson(job.answerTime(exchange))},
            {"durationMs", toJson(between(exchange.start, exchange.end))},
            {"firstLine", exchange.firstLine},
            {"lastLine", exchange.lastLine}};
}

JsonValue timeOf(const Job& job) {
    return job.time.known() && job.mixed == 0 ? splitToJson(job.time.all()) : JsonValue(nullptr);
}

JsonValue pagesOf(const Job& job) {
    return job.mixed == 0 ? JsonValue(job.pages) : JsonValue(nullptr);
}

JsonValue toJson(const Job& job, const ExchangeGap& gap) {
    const auto fromStart = [&](Time time) { return toJson(between(job.start, time)); };
    return {{"gap", true},
            {"events", gap.count},
            {"yes", gap.yes},
            {"no", gap.no},
            {"wait", gap.wait},
            {"other", gap.other},
            {"waits", gap.waits},
            {"start", timeToJson(gap.start)},
            {"fromMs", fromStart(gap.start)},
            {"toMs", fromStart(gap.end)},
            {"firstLine", gap.firstLine},
            {"lastLine", gap.lastLine}};
}

JsonValue listEvents(const Job& job, const EventWriter& ofEvent, const GapWriter& ofGap) {
    JsonValue events = JsonValue::array();
    Time waitsSince = noTime;
    const auto add = [&](JsonValue value, Time start) {
        if (waitsSince != noTime) {
            events.back()["waitMs"] = toJson(between(waitsSince, start));
        }
        events.push_back(std::move(value));
        waitsSince = noTime;
    };
    job.exchanges.forEach(
        [&](const Exchange& exchange) {
            add(ofEvent(job, exchange), exchange.start);
            waitsSince = exchange.reply == WaitPrint ? exchange.answered : noTime;
        },
        [&](const ExchangeGap& gap) { add(ofGap(job, gap), gap.start); });
    return events;
}

JsonValue toJson(const Job& job, const std::vector<std::string>& files) {
    JsonValue found = JsonValue::array();
    for (const Finding& finding : job.findings) {
        found.push_back(findingToJson(finding, job.times(finding.id)));
    }
    JsonValue value = {
        {"job", job.number},
        {"file", fileToJson(job.file, files)},
        {"firstLine", job.firstLine},
        {"lastLine", job.lastLine},
        {"printer", job.printer},
        {"port", job.port},
        {"processId", toJson(job.processId)},
        {"threadId", toJson(job.threadId)},
        {"start", timeToJson(job.start)},
        {"end", timeToJson(job.end)},
        {"durationMs", toJson(job.duration())},
        {"time", timeOf(job)},
        {"clockJumps", jumpsToJson(job.time.jump(), files)},
        {"result", toText(job.result())},
        {"silentMs", toJson(job.silent)},
        {"endsWithLog", job.atLogEnd && !job.overdue},
        {"pages", pagesOf(job)},
        {"launch", toJson(job.launch)},
        {"dral", companionToJson(job.dral)},
        {"nemb", companionToJson(job.nemb)},
        {"events",
         listEvents(
             job, [&](const Job&, const Exchange& event) { return eventInFile(job, event, files); },
             [](const Job& of, const ExchangeGap& gap) { return toJson(of, gap); })},
        {"eventsOmitted", job.exchanges.omitted()},
        {"findings", std::move(found)},
        {"findingsOmitted", job.findingsOmitted()},
        {"firstFailure", failureOf(job)}};
    if (job.mixed > 0) {
        value["mixed"] = job.mixed;
    }
    return value;
}

JsonValue toJson(const Summary& summary) {
    JsonValue ends = JsonValue::object();
    for (std::size_t i = 0; i < Summary::ends; ++i) {
        ends[toText(static_cast<JobEnd>(i))] = summary.jobEnds[i];
    }
    JsonValue files = JsonValue::array();
    for (const std::string& file : summary.files) {
        files.push_back(toUtf8(file));
    }
    JsonValue notLogs = JsonValue::array();
    for (const auto& [file, why] : summary.notLogs) {
        notLogs.push_back({{"file", toUtf8(file)}, {"why", why}});
    }
    return {{"files", std::move(files)},
            {"notLogs", std::move(notLogs)},
            {"lines", linesToJson(summary)},
            {"from", timeToJson(summary.firstTime)},
            {"to", timeToJson(summary.lastTime)},
            {"jobs", summary.jobs},
            {"jobsWithProblems", summary.jobsWithProblems},
            {"jobsWithWarnings", summary.jobsWithWarnings},
            {"results", std::move(ends)},
            {"open", summary.at(JobEnd::Open)},
            {"mixed", summary.at(JobEnd::Mixed)},
            {"pages", summary.pages},
            {"time", splitToJson(summary.time)},
            {"launches", {{"attempts", summary.launches}, {"reached", summary.launchesReached}}},
            {"events", eventsToJson(summary)},
            {"ownMessages", summary.ownMessages},
            {"findings", findingsToJson(summary)},
            {"printers", namesToJson(summary.printers, "jobs")},
            {"otherCategories", namesToJson(summary.categories, "records")}};
}

std::unique_ptr<Sink> makeJson(Writer& writer, const Options& options) {
    return std::make_unique<JsonOutput>(writer, options);
}

}  // namespace vok::log
