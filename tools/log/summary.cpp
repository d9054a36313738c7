#include "summary.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace vok::log {

void EventCounts::add(const Exchange& exchange) {
    const bool answered = exchange.delivery == Delivery::Answered;
    ++calls;
    wait += exchange.waits;
    yes += answered && exchange.reply == YesPrint ? 1 : 0;
    no += answered && exchange.reply == NoPrint ? 1 : 0;
    otherReplies += answered && !isKnown(exchange.reply) ? 1 : 0;
    notSent += exchange.delivery == Delivery::NotSent ? 1 : 0;
    undelivered += exchange.delivery == Delivery::Undelivered ? 1 : 0;
    noAnswer += exchange.delivery == Delivery::NoAnswer ? 1 : 0;
}

NameCounts& countsFor(NameTable& table, std::string_view name) {
    constexpr std::size_t capacity = 200;
    const auto found = table.find(name);
    return found != table.end()
               ? found->second
               : table[table.size() < capacity ? std::string(name) : "(all others)"];
}

void Summary::add(const Exchange& exchange) {
    if (exchange.ownMessage) {
        ++ownMessages;
        return;
    }
    events[{exchange.side, exchange.event}].add(exchange);
}

void Summary::addTime(const Exchange& exchange, std::int64_t length) {
    EventCounts& counts = events[{exchange.side, exchange.event}];
    ++counts.timed;
    counts.totalTime += length;
    counts.longest = std::max(counts.longest, length);
}

void Summary::add(const Job& job) {
    ++jobs;
    pages += job.pages;
    ++jobEnds[static_cast<std::size_t>(job.result())];
    for (std::size_t i = 0; i < time.size(); ++i) {
        time[i] += job.duration() ? job.time.at(static_cast<Phase>(i)) : 0;
    }
    const Weight weight = job.weight();
    NameCounts& printer = countsFor(printers, job.printer);
    ++printer.total;
    if (weight == Weight::Problem) {
        ++jobsWithProblems;
        ++printer.problems;
    } else if (weight == Weight::Warning) {
        ++jobsWithWarnings;
    }
    for (const Finding& finding : job.findings) {
        // The list may end before the counts do, and has one of each kind at least.
        if (&finding == job.find(finding.id)) {
            note(finding.id, finding.file, finding.line, job.times(finding.id), job.number);
            ++at(finding.id).jobs;
        }
    }
    if (const Finding* first = job.firstFailure()) {
        ++at(first->id).first;
    }
}

void Summary::note(FindingId id, std::size_t file, std::uint64_t line, std::uint64_t times,
                   std::uint64_t job) {
    FindingCounts& counts = at(id);
    if (counts.times == 0) {
        counts.file = file;
        counts.line = line;
        counts.job = job;
    }
    counts.times += times;
}

bool Summary::hasProblems(std::uint64_t FindingCounts::* count) const {
    return std::ranges::any_of(vok::log::findings(), [&](const FindingText& text) {
        return text.weight == Weight::Problem && at(text.id).*count > 0;
    });
}

}  // namespace vok::log
