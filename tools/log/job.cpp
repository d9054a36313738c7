#include "job.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "text.h"

namespace vok::log {

namespace {

// Milliseconds and times from which on a job is called slow.
constexpr std::int64_t manyWaits = 60000;
constexpr std::uint64_t manyAsks = 100;
constexpr std::int64_t longStartup = 30000;
constexpr std::int64_t slowHost = 300000;

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
    for (const Side side : {Side::Dral, Side::Nemb}) {
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
        job.add({FindingId::NotClosed, job.lastLine, Side::None,
                 job.left ? "silent for " + durationText(*job.left) : std::string()});
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
    if (job.hasTraces && (host >= slowHost || job.time.longestHost() >= TimeSplit::longPause)) {
        const std::uint64_t line = job.time.longestHostLine();
        const std::string longest = durationText(job.time.longestHost()) + " in a row, ";
        job.add({FindingId::SlowHost, line == 0 ? job.firstLine : line, Side::None,
                 (line == 0 ? "" : longest) + durationText(host) + " in all"});
    }
}

}  // namespace

void ExchangeGap::add(const Exchange& exchange) {
    if (count++ == 0) {
        start = exchange.start;
        firstLine = exchange.firstLine;
    }
    end = exchange.end;
    lastLine = exchange.lastLine;
    waits += exchange.waits;
    yes += exchange.reply == YesPrint ? 1 : 0;
    no += exchange.reply == NoPrint ? 1 : 0;
    wait += exchange.reply == WaitPrint ? 1 : 0;
    other += isKnown(exchange.reply) ? 0 : 1;
}

void Job::add(Finding finding) {
    finding.file = file;
    const bool first = findingTimes[static_cast<std::size_t>(finding.id)]++ == 0;
    if (first || findings.size() < maxFindings) {
        findings.push_back(std::move(finding));
    }
}

const Finding* Job::find(FindingId id) const {
    const auto found = std::ranges::find(findings, id, &Finding::id);
    return found == findings.end() ? nullptr : &*found;
}

std::uint64_t Job::findingsOmitted() const {
    return std::accumulate(findingTimes.begin(), findingTimes.end(), std::uint64_t{0}) -
           findings.size();
}

bool Job::hasOpened(Side side) const {
    const bool heard = open && open->side == side && open->delivery != Delivery::Open;
    return at(side).opened || (heard && open->event == Event::Open && open->reply != WaitPrint);
}

bool Job::hasEnded(Side side) const {
    const bool heard = open && open->side == side && open->delivery != Delivery::Open;
    return at(side).ended || (heard && open->ends() && open->reply != WaitPrint);
}

bool Job::isOver() const {
    const auto done = [](const Companion& side) { return side.ended || side.events == 0; };
    const bool ended = (dral.ended || nemb.ended) && done(dral) && done(nemb);
    const bool failed = launch.result == LaunchResult::NotReached && exchanges.size() == 0;
    const bool refused = has(FindingId::Refused) || has(FindingId::NoWindow);
    return !pending() && (ended || failed || refused || !hasDetails);
}

Duration Job::answerTime(const Exchange& exchange) const {
    const Duration byClock = exchange.answerTime();
    const bool jumped = time.jumpedBetween(exchange.firstLine, exchange.lastLine);
    return byClock && jumped && *byClock >= time.jump()->ms ? Duration(*byClock - time.jump()->ms)
                                                            : byClock;
}

JobEnd Job::result() const {
    if (mixed > 0) {
        return JobEnd::Mixed;
    }
    if (has(FindingId::Refused) || has(FindingId::NoWindow)) {
        return JobEnd::Refused;
    }
    if (cancelled) {
        return JobEnd::Cancelled;
    }
    if (atLogEnd) {
        return JobEnd::Open;
    }
    if (closed) {
        return JobEnd::Printed;
    }
    return exchanges.size() == 0 ? JobEnd::NoEvents : JobEnd::Unfinished;
}

Weight Job::weight() const {
    const Finding* first = firstFailure();
    return first == nullptr ? Weight::Note : textOf(first->id).weight;
}

const Finding* Job::firstFailure() const {
    const auto first = std::ranges::max_element(
        findings, {}, [](const Finding& finding) { return textOf(finding.id).weight; });
    return first == findings.end() ? nullptr : &*first;
}

std::string resultText(const Job& job) {
    if (job.result() == JobEnd::Mixed) {
        return "mixed: " + std::to_string(job.mixed) +
               " jobs can't be told apart, turn the numbers on: vok-doctor --log on";
    }
    if (job.result() != JobEnd::Open) {
        return toText(job.result());
    }
    const char* when = job.growing ? " so far" : " when the log ends";
    return job.silent.value_or(0) > 0 ? "open: silent for " + durationText(*job.silent) + when
                                      : "open: the log ends here";
}

std::string replyText(std::optional<std::int64_t> reply) {
    if (!reply) {
        return "";
    }
    return isKnown(reply) ? toText(static_cast<Reply>(*reply)) : std::to_string(*reply);
}

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
