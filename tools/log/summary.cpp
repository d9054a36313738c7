#include "summary.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vok::log {

namespace {

void countReply(EventCounts& counts, std::optional<std::int64_t> reply) {
    switch (reply.value_or(-1)) {
        case NoPrint:
            ++counts.no;
            break;
        case YesPrint:
            ++counts.yes;
            break;
        case WaitPrint:
            break;  // counted with the waits
        default:
            ++counts.otherReplies;
    }
}

void countDelivery(EventCounts& counts, const Exchange& exchange) {
    switch (exchange.delivery) {
        case Delivery::Answered:
            countReply(counts, exchange.reply);
            break;
        case Delivery::NotSent:
            ++counts.notSent;
            break;
        case Delivery::Undelivered:
            ++counts.undelivered;
            break;
        case Delivery::NoAnswer:
            ++counts.noAnswer;
            break;
        default:
            break;
    }
}

}  // namespace

NameCounts& NameTable::at(std::string_view name) {
    const auto found = names_.find(name);
    if (found != names_.end()) {
        return found->second;
    }
    return names_[std::string(names_.size() < capacity ? name : rest)];
}

void Summary::add(const Exchange& exchange) {
    if (exchange.ownMessage) {
        ++ownMessages;
        return;
    }
    EventCounts& counts =
        byEvent[static_cast<std::size_t>(exchange.side)][static_cast<std::size_t>(exchange.event)];
    ++counts.calls;
    counts.wait += exchange.waits;
    countDelivery(counts, exchange);
}

void Summary::addTime(const Exchange& exchange, std::int64_t length) {
    EventCounts& counts =
        byEvent[static_cast<std::size_t>(exchange.side)][static_cast<std::size_t>(exchange.event)];
    ++counts.timed;
    counts.totalTime += length;
    counts.longest = std::max(counts.longest, length);
}

void Summary::add(const Job& job) {
    ++jobs;
    pages += job.pages;
    ++jobEnds[static_cast<std::size_t>(job.result())];
    jobsOpen += job.result() == JobEnd::Open ? 1 : 0;
    jobsMixed += job.mixed > 0 ? 1 : 0;
    for (std::size_t i = 0; i < time.size(); ++i) {
        time[i] += job.duration() ? job.time.at(static_cast<Phase>(i)) : 0;
    }
    const Weight weight = job.weight();
    NameCounts& printer = printers.at(job.printer);
    ++printer.total;
    if (weight == Weight::Problem) {
        ++jobsWithProblems;
        ++printer.problems;
    } else if (weight == Weight::Warning) {
        ++jobsWithWarnings;
    }
    for (const Finding& finding : job.findings) {
        FindingCounts& counts = findings[static_cast<std::size_t>(finding.id)];
        if (counts.times == 0) {
            counts.file = finding.file;
            counts.line = finding.line;
            counts.job = job.number;
        }
        // The list may end before the counts do, and has one of each kind at least.
        if (&finding == job.find(finding.id)) {
            counts.times += job.times(finding.id);
            ++counts.jobs;
        }
    }
    if (const Finding* first = job.firstFailure()) {
        ++findings[static_cast<std::size_t>(first->id)].first;
    }
}

void Summary::note(FindingId id, std::size_t file, std::uint64_t line) {
    FindingCounts& counts = findings[static_cast<std::size_t>(id)];
    if (counts.times++ == 0) {
        counts.file = file;
        counts.line = line;
    }
}

const EventCounts& Summary::at(Side side, Event event) const {
    return byEvent[static_cast<std::size_t>(side)][static_cast<std::size_t>(event)];
}

const FindingCounts& Summary::at(FindingId id) const {
    return findings[static_cast<std::size_t>(id)];
}

bool Summary::hasProblems() const {
    const auto known = vok::log::findings();
    return std::any_of(known.begin(), known.end(), [&](const FindingText& text) {
        return text.weight == Weight::Problem && at(text.id).times > 0;
    });
}

}  // namespace vok::log
