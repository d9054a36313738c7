// What a job as a whole shows, beyond what single lines say.

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "job.h"
#include "text.h"

namespace vok::log {

namespace {

// Milliseconds and times from which on a job is called slow.
constexpr std::int64_t manyWaits = 60000;
constexpr std::uint64_t manyAsks = 100;
constexpr std::int64_t longStartup = 30000;
constexpr std::int64_t slowHost = 300000;
constexpr std::int64_t longHostPause = 60000;

constexpr Side companions[] = {Side::Dral, Side::Nemb};

// What a single line says by itself, whichever job it was of.
constexpr FindingId certain[] = {
    FindingId::Refused,           FindingId::NotConnected, FindingId::PrinterNotOpened,
    FindingId::NoPrefixData,      FindingId::NoUserToken,  FindingId::StartAsUserFailed,
    FindingId::StartFailed,       FindingId::PipeNotMade,  FindingId::StartupTimeout,
    FindingId::StartupWaitFailed, FindingId::NoWindow,     FindingId::NotHandedOn};

void judgeLaunch(Job& job) {
    if (job.launch.result == LaunchResult::Open && (!job.atLogEnd || job.overdue)) {
        job.add({FindingId::LaunchUnfinished, job.lastLine, Side::None, {}});
    }
    bool answered = false;
    job.exchanges.forEach([&](const Exchange& exchange) {
        answered = answered || exchange.delivery == Delivery::Answered;
    });
    if (job.launch.result == LaunchResult::NotReached && !answered &&
        job.weight() != Weight::Problem) {
        job.add({FindingId::LaunchFailed, job.lastLine, Side::None, {}});
    }
}

// A job that the log breaks off is no failure while it may simply go on.
void judgeEnd(Job& job) {
    const bool mayGoOn = job.atLogEnd && !job.overdue;
    bool waits = false;
    for (const Side side : companions) {
        const Companion& companion = job.at(side);
        if (companion.busy && !companion.ended && !mayGoOn) {
            job.add({FindingId::StillWaiting, job.lastLine, side, {}});
            waits = true;
        }
    }
    if (!job.hasDetails) {
        job.add({FindingId::NoDetails, job.lastLine, Side::None, {}});
    } else if (mayGoOn) {
        job.add({FindingId::JobOpen, job.lastLine, Side::None, {}});
    } else if (job.overdue && !waits && !job.has(FindingId::NoAnswer) &&
               !job.has(FindingId::LaunchUnfinished)) {
        job.add({FindingId::JobSilent, job.lastLine, Side::None,
                 job.silent ? "for " + durationText(*job.silent) : std::string()});
    } else if (!job.atLogEnd && !job.closed && !job.cancelled &&
               (job.launch.result == LaunchResult::Reached || job.exchanges.size() > 0)) {
        job.add({FindingId::NotClosed, job.lastLine, Side::None, {}});
    }
}

void judgeTime(Job& job) {
    if (job.time.jump()) {
        const ClockJump& jump = *job.time.jump();
        job.add({FindingId::ClockJump, jump.line, Side::None,
                 fmt::format("{} by {}", jump.ms < 0 ? "back" : "forward",
                             durationText(std::abs(jump.ms)))});
        job.findings.back().file = jump.file;
    }
    const Side waiting = job.nemb.waits > job.dral.waits ? Side::Nemb : Side::Dral;
    const Companion& companion = job.at(waiting);
    const std::int64_t waited = job.time.at(Phase::Wait);
    if (waited >= manyWaits || companion.waits >= manyAsks) {
        job.add({FindingId::ManyWaits, companion.firstWaitLine, waiting,
                 fmt::format("{} times, {}", companion.waits, durationText(waited))});
    }
    const std::int64_t startup = job.time.at(Phase::Launch) + job.time.at(Phase::Startup);
    if (startup >= longStartup) {
        job.add({FindingId::LongStartup, job.launch.firstLine, Side::None, durationText(startup)});
    }
    const std::int64_t host = job.time.at(Phase::Host);
    // Without traces a page's own time can't be told from the host's.
    if (job.hasTraces && (host >= slowHost || job.time.longestHost() >= longHostPause)) {
        job.add({FindingId::SlowHost, job.firstLine, Side::None, durationText(host)});
    }
}

}  // namespace

void judge(Job& job) {
    judgeLaunch(job);
    judgeTime(job);
    judgeEnd(job);
    std::ranges::stable_sort(job.findings, {}, &Finding::line);
}

std::vector<Finding> dropGuesses(Job& job) {
    std::vector<Finding> kept = std::exchange(job.findings, {});
    std::erase_if(kept, [](const Finding& finding) {
        return std::ranges::find(certain, finding.id) == std::end(certain);
    });
    job.findingTimes = {};
    job.add({FindingId::MixedJobs, job.firstLine, Side::None, {}});
    return kept;
}

}  // namespace vok::log
