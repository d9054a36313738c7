// One event to one companion: what was sent, what came back, and what went wrong.
#ifndef VOK_LOG_EVENT_STEPS_H
#define VOK_LOG_EVENT_STEPS_H

#include <cstdint>
#include <string>

#include "job.h"

namespace vok::log {

// True for the steps that belong to an event.
bool isEventStep(Step step);

// True for what the library writes of a call after its answer.
bool isTrail(Step step);

// True when the step can't belong to the exchange as it stands, so that a new call has begun. Only
// needed where the log has no traces, which say it themselves.
bool beginsNewExchange(const Exchange& exchange, const Message& message);

// The side of a 9x event that names none, guessed from the order in which a job's events come.
Side guessSide(const Message& message, const Job& job);

// The answer in a reply's line, in words; empty for any other line.
std::string answerIn(const Message& message);

void takeEventStep(const Message& message, const Record& record, std::uint64_t line,
                   Exchange& exchange, Job& job);

// The call is over: nothing more of it follows.
void finishExchange(Exchange& exchange, Job& job, std::int64_t slow);

}  // namespace vok::log

#endif
