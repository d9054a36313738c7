// The launch of a job: which companion was found or started, how, and what failed.
#ifndef VOK_LOG_LAUNCH_STEPS_H
#define VOK_LOG_LAUNCH_STEPS_H

#include <cstdint>

#include "job.h"

namespace vok::log {

// What a launch in progress has shown of one companion.
struct StartAttempt {
    bool path = false;       // does not run, is about to be started
    bool launching = false;  // the line of the start
    bool token = false;      // the user's token was had
    bool asUser = false;     // the program was called with a token
    bool winExec = false;
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

}  // namespace vok::log

#endif
