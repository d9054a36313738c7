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
    other += exchange.reply.value_or(-1) < NoPrint || exchange.reply > WaitPrint ? 1 : 0;
}

void Job::add(Finding finding) {
    finding.file = file;
    const bool first = findingTimes[static_cast<std::size_t>(finding.id)]++ == 0;
    if (first || findings.size() < maxFindings) {
        findings.push_back(std::move(finding));
    }
}

const Finding* Job::find(FindingId id) const {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [id](const Finding& finding) { return finding.id == id; });
    return found == findings.end() ? nullptr : &*found;
}

std::uint64_t Job::findingsOmitted() const {
    return std::accumulate(findingTimes.begin(), findingTimes.end(), std::uint64_t{0}) -
           findings.size();
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
    Weight heaviest = Weight::Note;
    for (const Finding& finding : findings) {
        heaviest = std::max(heaviest, textOf(finding.id).weight);
    }
    return heaviest;
}

const Finding* Job::firstFailure() const {
    const Weight heaviest = weight();
    const auto found = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
        return textOf(finding.id).weight == heaviest;
    });
    return found == findings.end() ? nullptr : &*found;
}

const char* toText(JobEnd end) {
    constexpr const char* texts[] = {"printed", "refused", "cancelled", "unfinished",
                                     "open",    "mixed",   "no events"};
    return texts[static_cast<std::size_t>(end)];
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

const char* toText(Origin origin) {
    constexpr const char* texts[] = {"?", "found running", "started", "not reached"};
    return texts[static_cast<std::size_t>(origin)];
}

const char* toText(Start start) {
    constexpr const char* texts[] = {"", "as the user", "with the spooler's token", "by WinExec",
                                     "by CreateProcess"};
    return texts[static_cast<std::size_t>(start)];
}

const char* toText(Delivery delivery) {
    constexpr const char* texts[] = {"open",        "answered",  "not sent",
                                     "undelivered", "no answer", "not logged"};
    return texts[static_cast<std::size_t>(delivery)];
}

const char* toText(LaunchResult result) {
    constexpr const char* texts[] = {"not in the log", "unfinished", "both found or started",
                                     "not both found or started"};
    return texts[static_cast<std::size_t>(result)];
}

std::string replyText(std::optional<std::int64_t> reply) {
    constexpr const char* names[] = {"NOPRINT", "YESPRINT", "WAITPRINT"};
    if (!reply) {
        return "";
    }
    const bool named = *reply >= NoPrint && *reply <= WaitPrint;
    return named ? names[static_cast<std::size_t>(*reply)] : std::to_string(*reply);
}

}  // namespace vok::log
