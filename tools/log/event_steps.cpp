#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "steps.h"
#include "text.h"

namespace vok::log {

namespace {

constexpr std::string_view windowEndTime = "EndJobTime=";

Phase phaseOf(Side side) {
    return side == Side::Nemb ? Phase::Nemb : Phase::Dral;
}

std::int64_t replyOf(std::string_view value) {
    for (const Reply reply : {NoPrint, YesPrint, WaitPrint}) {
        if (value.starts_with(toText(reply))) {
            return reply;
        }
    }
    return leadingNumber(value).value_or(-1);
}

void takeEndTick(std::string_view value, Job& job) {
    if (const auto tick = leadingNumber(value)) {
        job.time.endTick(static_cast<std::uint32_t>(*tick));
    }
}

void takeReply(const Message& message, const Record& record, Exchange& exchange, Job& job) {
    exchange.reply = replyOf(message.value);
    exchange.delivery = Delivery::Answered;
    exchange.answered = record.time;
    ++exchange.asks;
    exchange.waits += exchange.reply == WaitPrint ? 1 : 0;
    const std::size_t label = message.value.find(windowEndTime);
    if (label != std::string_view::npos) {
        takeEndTick(message.value.substr(label + windowEndTime.size()), job);
    }
}

// Lines by which the library reports what went wrong with an event, and what became of it.
struct Report {
    Step step;
    FindingId id;
    Delivery delivery;
};

constexpr Report reports[] = {
    {Step::NotConnected, FindingId::NotConnected, Delivery::Undelivered},
    {Step::NoWindow, FindingId::NoWindow, Delivery::Undelivered},
    {Step::NoRecord, FindingId::NoHandle, Delivery::Undelivered},
    {Step::NotOpen, FindingId::NotOpen, Delivery::NotSent},
    {Step::UnknownEvent, FindingId::UnknownEvent, Delivery::NotSent},
    {Step::AnyMessageInvalid, FindingId::InvalidMessage, Delivery::NotSent},
    {Step::StartupTimeout, FindingId::StartupTimeout, Delivery::Open},
    {Step::StartupWaitFailed, FindingId::StartupWaitFailed, Delivery::Open},
};

void takeReport(const Message& message, std::uint64_t line, Exchange& exchange, Job& job) {
    const Report* report = std::ranges::find(reports, message.text.step, &Report::step);
    if (report == std::end(reports)) {
        return;
    }
    exchange.delivery = report->delivery;
    const std::string code = codeText(message.value);
    job.add({report->id, line, exchange.side, code.empty() ? toText(exchange.event) : code});
}

// NOPRINT stops a job only where the library hands it on and something is left to stop.
FindingId meaningOfNoPrint(const Exchange& exchange) {
    if (exchange.side == Side::Nemb && exchange.route == Route::Pipe &&
        exchange.event != Event::Open) {
        return FindingId::NotHandedOn;
    }
    return exchange.ends() ? FindingId::UnusualReply : FindingId::Refused;
}

// DRAL hears of each page once.
std::string eventText(const Exchange& exchange, const Job& job) {
    const bool page = exchange.event == Event::Page && exchange.side == Side::Dral;
    return toText(exchange.event) + (page ? " " + std::to_string(job.pages + 1) : std::string());
}

void judgeReply(const Exchange& exchange, Job& job) {
    if (exchange.reply != YesPrint && exchange.reply != WaitPrint) {
        const bool refuses = exchange.reply == NoPrint;
        job.add({refuses ? meaningOfNoPrint(exchange) : FindingId::UnusualReply, exchange.lastLine,
                 exchange.side,
                 eventText(exchange, job) + (" answered " + replyText(exchange.reply))});
    }
}

// What the job does from this line on.
void enterPhase(const Message& message, const Exchange& exchange, Job& job) {
    const Phase after = exchange.reply == WaitPrint ? Phase::Wait : Phase::Host;
    switch (message.text.step) {
        case Step::Asked:
        case Step::AskedAfter:
        case Step::Loop:
        case Step::StartupWaitEnd:
            return job.time.enter(phaseOf(exchange.side));
        case Step::NoHandle:
        case Step::StartupWait:
        case Step::StartupTimeout:
        case Step::StartupWaitFailed:
            return job.time.enter(Phase::Startup);
        case Step::Pause:
            return job.time.pauseThen(after);
        default:
            return job.time.enter(after);
    }
}

bool isNotable(const Exchange& exchange, std::int64_t slow) {
    const bool calm = exchange.delivery == Delivery::Unseen ||
                      (exchange.delivery == Delivery::Answered &&
                       (exchange.reply == YesPrint || exchange.reply == WaitPrint));
    return !calm || exchange.answerTime().value_or(0) >= slow;
}

void countInJob(const Exchange& exchange, Job& job) {
    Companion& companion = job.at(exchange.side);
    ++companion.events;
    companion.waits += exchange.waits;
    if (exchange.waits > 0 && companion.firstWaitLine == 0) {
        companion.firstWaitLine = exchange.lastLine;
    }
    const bool waits = exchange.reply == WaitPrint;
    companion.opened = companion.opened || (exchange.event == Event::Open && !waits);
    const bool heard =
        exchange.delivery != Delivery::NoAnswer && exchange.delivery != Delivery::Open;
    // On its pipe NEMB has only one close; what it answers there is not looked at.
    const bool ended = heard && exchange.ends() &&
                       (!waits || (exchange.side == Side::Nemb && exchange.route == Route::Pipe));
    companion.ended = companion.ended || ended;
    job.closed = job.closed || (heard && exchange.event == Event::Close);
    job.cancelled = job.cancelled || exchange.event == Event::Cancel;
    const bool stopped = exchange.reply == NoPrint || exchange.delivery == Delivery::NoAnswer;
    if (exchange.event == Event::Page && exchange.side == Side::Dral && !waits && !stopped) {
        ++job.pages;
    }
    companion.busy = waits;
}

}  // namespace

bool beginsNewExchange(const Exchange& exchange, const Message& message) {
    const Step step = message.text.step;
    if (isTrail(step)) {
        return false;
    }
    if (step == Step::AnyMessage || step == Step::NoHandle || step == Step::NoRecord ||
        !meet(exchange.side, message.text.side) || !meet(exchange.event, message.text.event)) {
        return true;
    }
    if (step == Step::Loop) {
        return false;
    }
    const bool begins = isAsk(step) || step == Step::UnknownEvent;
    return exchange.delivery != Delivery::Open || (begins && exchange.event != Event::None);
}

std::string answerIn(const Message& message) {
    return message.text.step == Step::Reply ? replyText(replyOf(message.value)) : std::string();
}

Side guessSide(const Message& message, const Job& job) {
    if (message.text.side != Side::None || message.text.step == Step::AnyMessage) {
        return message.text.side;
    }
    if (message.text.event == Event::Open) {
        return job.dral.opened ? Side::Nemb : Side::Dral;
    }
    // Only DRAL's close and cancel say more, and NEMB's come first on these systems.
    return job.nemb.ended ? Side::Dral : Side::Nemb;
}

void takeEventStep(const Message& message, const Record& record, Exchange& exchange, Job& job) {
    const KnownText& text = message.text;
    exchange.side = text.side == Side::None ? exchange.side : text.side;
    exchange.event = text.event == Event::None ? exchange.event : text.event;
    exchange.route = text.route == Route::None ? exchange.route : text.route;
    switch (text.step) {
        case Step::Asked:
            exchange.asked = record.time;
            break;
        case Step::Loop:
            exchange.delivery = Delivery::Open;
            break;
        case Step::Reply:
            takeReply(message, record, exchange, job);
            break;
        case Step::JobEndTime:
            takeEndTick(message.value, job);
            break;
        case Step::AnyMessage:
            exchange.ownMessage = true;
            exchange.delivery = Delivery::Unseen;
            break;
        default:
            takeReport(message, record.line, exchange, job);
            break;
    }
    if (isAsk(text.step) && !message.value.empty()) {
        job.at(exchange.side).handle = message.value;
    }
    if (exchange.route != Route::None && exchange.side != Side::None) {
        job.at(exchange.side).route = exchange.route;
    }
    enterPhase(message, exchange, job);
}

void finishExchange(Exchange& exchange, Job& job, std::int64_t slow) {
    if (exchange.delivery == Delivery::Open && job.mixed > 0) {
        exchange.delivery = Delivery::Unseen;
    }
    if (exchange.delivery == Delivery::Open && (!job.atLogEnd || job.overdue)) {
        exchange.delivery = Delivery::NoAnswer;
        job.add({FindingId::NoAnswer, exchange.lastLine, exchange.side, eventText(exchange, job)});
    }
    if (exchange.route == Route::None && exchange.side != Side::None) {
        exchange.route = job.at(exchange.side).route;
    }
    if (exchange.delivery == Delivery::Answered) {
        judgeReply(exchange, job);
    }
    if (!exchange.ownMessage && exchange.side != Side::None) {
        countInJob(exchange, job);
    }
    exchange.notable = isNotable(exchange, slow) || job.time.longPauseBefore(exchange.firstLine);
    if (exchange.notable) {
        for (JobLine& line : job.lines.latest()) {
            line.notable = line.notable ||
                           (line.number >= exchange.firstLine && line.number <= exchange.lastLine);
        }
    }
    job.exchanges.add(exchange);
}

}  // namespace vok::log
