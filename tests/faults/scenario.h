// Situations in which the library's exports are called: the system, its companions, the record as
// earlier calls left it, and the calls.
#pragma once
#include <vok/vok.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "faults/job.h"
#include "faults/restarted_library.h"
#include "sim/sim.h"

namespace vok::test {

enum class Export { launch, dral, nemb, messageToWindow, messageToPipe };

struct Step {
    Export which;
    DWORD messageId = 0;
};

enum class Logging {
    none,      // no configuration library
    off,       // "startLog" is 0
    on,        // every line is written
    critical,  // the registry key of the options is denied: the critical log
    common,    // one log for all programs
    uncached   // on, with every option read anew at each use
};

struct Scenario {
    std::string name;
    OsRelease os = os::winXp;
    Logging logging = Logging::on;
    std::string port = "LPT1:";
    std::vector<Step> steps;
    std::function<void(System&, VKDATA&)> prepare;

    bool writesLog() const {
        return logging == Logging::on || logging == Logging::common || logging == Logging::uncached;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
    return out << scenario.name;
}

// At least one for every way that an export can go.
const std::vector<Scenario>& scenarios();

// Puts the scenario's logging on the machine, and lets its buffers be overwritten to their full
// given size.
void prepareMachine(System& system, const Scenario& scenario);

// One call of an export as the step says; its result in 32 bits.
LONG perform(const Exports& library, const Step& step, Job& job);

}  // namespace vok::test
