// The Assembler's part that puts records together to calls.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "assembler.h"
#include "text.h"

namespace vok::log {

namespace {

constexpr std::string_view launchExport = "VOKLaunchXFiles";

Side sideOfExport(std::string_view name) {
    return name == "VOKSendDralMsg"   ? Side::Dral
           : name == "VOKSendNembMsg" ? Side::Nemb
                                      : Side::None;
}

Phase phaseOfExport(std::string_view name) {
    const Side side = sideOfExport(name);
    return name == launchExport ? Phase::Launch
           : side == Side::Nemb ? Phase::Nemb
           : side == Side::Dral ? Phase::Dral
                                : Phase::Host;
}

}  // namespace

// A call of which nothing but its entry is known.
Exchange Assembler::exchangeOf(const Entry& entry, Delivery delivery) const {
    Exchange exchange;
    exchange.side = sideOfExport(entry.name);
    exchange.ownMessage = exchange.side == Side::None;
    exchange.delivery = delivery;
    exchange.start = entry.time;
    exchange.end = entry.inner;
    exchange.firstLine = exchange.lastLine = entry.line;
    exchange.file = file_;
    return exchange;
}

// The entry stands alone: nothing of the call but its trace was logged.
void Assembler::endEntry(Stream& stream, bool logEnds) {
    const Entry entry = std::exchange(stream.entry, {});
    if (entry.name.empty()) {
        return;
    }
    // Where threads can't be told apart, the call's other lines come later, among others.
    const bool detailed = stream.job != nullptr && stream.job->hasDetails;
    if (detailed && !stream.threadId && !logEnds) {
        return;
    }
    stream.entry = entry;
    if (entry.name == launchExport) {
        leaveJob(stream, entry.time);
        Job& job = newJob(stream, entry.line, entry.time);
        job.launch = {{entry.time, entry.inner, entry.line, entry.line}, LaunchResult::Missing, 1};
        useEntry(stream, job);
        return;
    }
    Job& job = stream.job != nullptr ? *stream.job : newJob(stream, entry.line, entry.time);
    endExchange(job, summary_);
    job.open = exchangeOf(entry, detailed ? Delivery::Open : Delivery::Unseen);
    useEntry(stream, job);
    endExchange(job, summary_);
}

Job& Assembler::jobOf(Stream& stream, const Message& message, const Record& record) {
    if (!stream.threadId) {
        stream.job = chooseJob(stream, message);
    }
    if (stream.job == nullptr) {
        Job& job = newJob(stream, record.line, record.time);
        job.add({FindingId::NoLaunch, record.line, Side::None, {}});
    }
    return *stream.job;
}

void Assembler::takeEvent(Stream& stream, const Message& message, const Record& record) {
    if (stream.threadId) {
        stream.launching = nullptr;
    }
    const bool ownTrail =
        isTrail(message.text.step) && message.text.step != Step::AnyMessageInvalid;
    if (!stream.threadId && ownTrail && chooseJob(stream, message) == nullptr) {
        return;  // of a job that is over already
    }
    Job& job = jobOf(stream, message, record);
    job.hasDetails = true;
    // Where threads can't be told apart, another job may have entered before this one is answered.
    const bool entered = !stream.entry.name.empty() && (stream.threadId || !job.pending());
    if (entered || !job.open || beginsNewExchange(*job.open, message)) {
        beginExchange(stream, job, message, record);
    }
    touch(job, record);
    if (!job.open) {
        return;  // the rest of a call whose beginning is not in the log
    }
    takeEventStep(message, record, *job.open, job);
    job.open->end = record.time;
    job.open->lastLine = record.line;
}

void Assembler::beginExchange(Stream& stream, Job& job, const Message& message,
                              const Record& record) {
    if (job.pending() && job.shared) {
        std::vector<Job*> live = liveJobs(stream);
        live.push_back(&job);
        mix(live);
    }
    endExchange(job, summary_);
    if (isTrail(message.text.step) && message.text.step != Step::AnyMessageInvalid) {
        stream.entry = {};
        return;
    }
    const Entry& entry = stream.entry;
    const Side side = sideOfExport(entry.name);
    const bool ours = !entry.name.empty() && meet(side, message.text.side);
    Exchange exchange;
    exchange.side = ours && side != Side::None ? side : guessSide(message, job);
    exchange.start = ours ? entry.time : record.time;
    // A page's answer by window has no line before it: the last trace is when it was asked for.
    exchange.asked = ours ? entry.inner : noTime;
    exchange.firstLine = ours ? entry.line : record.line;
    exchange.lastLine = record.line;
    exchange.file = file_;
    job.open = exchange;
    useEntry(stream, job);
}

void Assembler::endExchange(Job& job, Summary& summary) const {
    if (!job.open) {
        return;
    }
    Exchange exchange = *std::exchange(job.open, std::nullopt);
    finishExchange(exchange, job, options_.slow);
    summary.add(exchange);
    if (exchange.answerTime() && !exchange.ownMessage) {
        const bool longest = !job.slowest || job.slowest->answerTime() < exchange.answerTime();
        const auto known =
            longest ? std::exchange(job.slowest, exchange) : std::optional<Exchange>(exchange);
        if (known) {
            account(job, *known, summary);
        }
    }
}

// Not before it is known whether the clock was set meanwhile: the longest answer of a job waits for
// the job's end.
void Assembler::account(Job& job, const Exchange& exchange, Summary& summary) const {
    const std::int64_t time = job.answerTime(exchange).value_or(0);
    summary.addTime(exchange, time);
    if (exchange.side != Side::None) {
        job.at(exchange.side).answerTotal += time;
    }
    if (time >= options_.slow) {
        job.add({FindingId::SlowAnswer, exchange.lastLine, exchange.side,
                 toText(exchange.event) + (" took " + durationText(time))});
    }
}

// The trace that stood before the call's first line belongs to the job.
void Assembler::useEntry(Stream& stream, Job& job) const {
    Entry entry = std::exchange(stream.entry, {});
    if (entry.name.empty()) {
        return;
    }
    if (job.lastLine >= entry.line && job.exchanges.size() == 0) {
        job.firstLine = std::min(job.firstLine, entry.line);
        job.start = job.start == noTime || entry.time == noTime ? job.start
                                                                : std::min(job.start, entry.time);
    }
    job.hasTraces = true;
    if (!job.time.known() || entry.record > job.lastRecord) {
        job.time.advance(entry.time, entry.line, file_);
        job.time.enter(phaseOfExport(entry.name));
        job.time.advance(entry.inner, entry.line, file_);
    }
    for (JobLine& line : entry.lines) {
        job.lines.add(std::move(line));
    }
}

}  // namespace vok::log
