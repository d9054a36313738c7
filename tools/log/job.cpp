#include "job.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

#include "text.h"

namespace vok::log {

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
        return "mixed: " + std::to_string(job.mixed) + " jobs can't be told apart";
    }
    if (job.result() != JobEnd::Open) {
        return toText(job.result());
    }
    const char* when = job.growing ? " so far" : " when the log ends";
    return job.silent.value_or(0) > 0 ? "open: silent for " + durationText(*job.silent) + when
                                      : "open: the log ends here";
}

std::string replyText(std::optional<std::int64_t> reply) {
    constexpr const char* names[] = {"NOPRINT", "YESPRINT", "WAITPRINT"};
    if (!reply) {
        return "";
    }
    return isKnown(reply) ? names[static_cast<std::size_t>(*reply)] : std::to_string(*reply);
}

}  // namespace vok::log
