// What the lines of launches and events make of a job.
#pragma once

#include <cstdint>
#include <string>

#include "job.h"

namespace vok::log {

// What a launch in progress has shown of one companion.
struct StartAttempt {
    bool path = false;    // does not run, is about to be started
    bool token = false;   // the user's token was had
    bool asUser = false;  // the program was called with a token
    bool reached = false;
    bool explained = false;  // a finding says what failed
};

struct LaunchProgress {
    Side side = Side::Dral;  // the one being started now
    StartAttempt dral;
    StartAttempt nemb;

    StartAttempt& at(Side which) { return which == Side::Nemb ? nemb : dral; }
};

// Takes one line of a launch, other than its beginning.
void takeLaunchStep(const Message& message, std::uint64_t line, LaunchProgress& progress, Job& job);

// True for the steps that belong to an event.
constexpr bool isEventStep(Step step) {
    return step >= Step::Asked && step <= Step::AnyMessageInvalid;
}

// True for the line in which a companion is asked.
constexpr bool isAsk(Step step) {
    return step == Step::Asked || step == Step::AskedAfter;
}

// True for what the library writes of a call after its answer.
constexpr bool isTrail(Step step) {
    return step == Step::Trail || step == Step::Pause || step == Step::JobEndTime ||
           step == Step::AnyMessageInvalid;
}

// What is known of the same in two places does not speak against each other.
template <typename Known>
constexpr bool meet(Known one, Known other) {
    return one == Known::None || other == Known::None || one == other;
}

// True when the step can't belong to the exchange as it stands, so that a new call has begun. Only
// needed where the log has no traces, which say it themselves.
bool beginsNewExchange(const Exchange& exchange, const Message& message);

// The side of a 9x event that names none, guessed from the order in which a job's events come.
Side guessSide(const Message& message, const Job& job);

// The answer in a reply's line, in words; empty for any other line.
std::string answerIn(const Message& message);

void takeEventStep(const Message& message, const Record& record, Exchange& exchange, Job& job);

// The call is over: nothing more of it follows.
void finishExchange(Exchange& exchange, Job& job, std::int64_t slow);

}  // namespace vok::log
