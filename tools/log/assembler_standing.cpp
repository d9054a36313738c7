// The Assembler's part for logs that grow: jobs are told before they are over for good.

#include <cstdint>
#include <optional>

#include "assembler.h"
#include "sharing.h"

namespace vok::log {

namespace {

// Milliseconds in which the library may still write of a job whose companions have heard the end.
constexpr std::int64_t settlingTime = 2000;

}  // namespace

// How long the job has said nothing.
Duration Assembler::silence(const Job& job, Time last, std::int64_t idle) {
    const Duration inLog = between(job.end, last);
    return inLog || idle > 0 ? Duration(inLog.value_or(0) + idle) : std::nullopt;
}

void Assembler::tellStanding(Time last, std::int64_t idle) {
    table_.forEach([&](Job& job) {
        const std::int64_t limit = isThrough(job) ? settlingTime : options_.silent;
        const bool news = job.hasDetails && job.told != job.lastRecord;
        if (news && silence(job, last, idle).value_or(0) > limit) {
            job.told = job.lastRecord;
            tell(job, last, idle);
        }
    });
}

// By a copy: the job itself may go on.
void Assembler::tell(Job job, Time last, std::int64_t idle) const {
    Summary nowhere;
    for (const auto& [key, stream] : streams_) {
        const bool ours = stream.threadId && stream.job != nullptr &&
                          stream.job->number == job.number && !stream.entry.name.empty();
        if (ours) {
            endExchange(job, nowhere);
            job.open = exchangeOf(stream.entry, Delivery::Open);
        }
    }
    if (!job.pending()) {
        endExchange(job, nowhere);
    }
    job.standing = true;
    leaveOpen(job, last, idle);
    conclude(job, nowhere);
    for (Sink* sink : sinks_) {
        sink->job(job);
    }
}

}  // namespace vok::log
