#include "sharing.h"

#include <vector>

#include "event_steps.h"

namespace vok::log {

namespace {

// What a companion has heard, with the call that is not written down yet.
struct Heard {
    bool opened = false;
    bool ended = false;
};

Heard heardBy(const Job& job, Side side) {
    const Companion& companion = job.at(side);
    Heard heard{companion.opened, companion.ended};
    if (job.open && job.open->side == side && job.open->delivery != Delivery::Open) {
        const bool waits = job.open->reply == WaitPrint;
        const bool end = job.open->event == Event::Close || job.open->event == Event::Cancel;
        heard.opened = heard.opened || (job.open->event == Event::Open && !waits);
        heard.ended = heard.ended || (end && !waits);
    }
    return heard;
}

bool mayHear(const Job& job, Side side, Event event) {
    if (side == Side::None) {
        return !isThrough(job);
    }
    const Heard heard = heardBy(job, side);
    const bool known = job.launch.result != LaunchResult::Missing;
    if (heard.ended || (event == Event::Open && heard.opened)) {
        return false;
    }
    return !known || heard.opened || (event != Event::Page && event != Event::Close);
}

bool handleFits(const Job& job, const Message& message) {
    const Companion& companion = job.at(message.text.side);
    const bool unknown = companion.handle.empty() && companion.route != Route::Pipe;
    return message.value.empty() || companion.handle == message.value || unknown;
}

bool beginsCall(const Message& message) {
    const Step step = message.text.step;
    const bool pageByWindow = step == Step::Reply && message.text.event == Event::Page;
    return step == Step::Asked || step == Step::AskedAfter || step == Step::NoHandle ||
           step == Step::NoRecord || step == Step::AnyMessage || step == Step::UnknownEvent ||
           pageByWindow;
}

bool isGuess(FindingId id) {
    switch (id) {
        case FindingId::Refused:
        case FindingId::NotConnected:
        case FindingId::PrinterNotOpened:
        case FindingId::NoPrefixData:
        case FindingId::NoUserToken:
        case FindingId::StartAsUserFailed:
        case FindingId::StartFailed:
        case FindingId::PipeNotMade:
        case FindingId::StartupTimeout:
        case FindingId::StartupWaitFailed:
        case FindingId::NoWindow:
        case FindingId::NotHandedOn:
            return false;
        default:
            return true;
    }
}

}  // namespace

bool isThrough(const Job& job) {
    return heardBy(job, Side::Dral).ended && heardBy(job, Side::Nemb).ended;
}

bool namesHandle(const Job& job, const Message& message) {
    const Step step = message.text.step;
    return (step == Step::Asked || step == Step::AskedAfter) && message.text.side != Side::None &&
           !message.value.empty() && job.at(message.text.side).handle == message.value;
}

bool fits(const Job& job, const Message& message) {
    if (job.launch.result == LaunchResult::Open) {
        return false;
    }
    if (isTrail(message.text.step)) {
        const bool meets =
            job.open && (message.text.side == Side::None || message.text.side == job.open->side);
        return meets && !job.pending();
    }
    if (job.open && !beginsNewExchange(*job.open, message)) {
        const bool asksAgain = message.text.step == Step::Loop && job.open->reply == WaitPrint;
        return job.pending() || asksAgain ||
               (message.text.step != Step::Loop && !beginsCall(message));
    }
    if (job.pending() || !beginsCall(message)) {
        return false;
    }
    const Side side = message.text.side;
    const bool pageReply = message.text.step == Step::Reply;
    const bool nine = message.text.route == Route::Window9x;
    const Route route = job.at(side == Side::None ? Side::Dral : side).route;
    const bool routeFits = !pageReply || (nine ? route == Route::Window9x : route == Route::Window);
    const bool asks = message.text.step == Step::Asked || message.text.step == Step::AskedAfter;
    return routeFits && (!asks || side == Side::None || handleFits(job, message)) &&
           mayHear(job, side, message.text.event);
}

std::vector<Finding> dropGuesses(Job& job) {
    std::vector<Finding> certain;
    for (const Finding& finding : job.findings) {
        if (!isGuess(finding.id)) {
            certain.push_back(finding);
        }
    }
    job.findings.clear();
    job.findingTimes = {};
    job.add({FindingId::MixedJobs, job.firstLine, Side::None, {}});
    return certain;
}

}  // namespace vok::log
