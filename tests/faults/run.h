// One run of a scenario on the DLL as it ships, with one failure armed, and what was wrong with it.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "faults/scenario.h"

namespace vok::test {

struct Arming {
    size_t call = 0;  // the k-th call that can fail
    size_t way = 0;
    Lasting lasting = Lasting::once;
};

struct RunReport {
    size_t fired = 0;          // failures given
    size_t failableCalls = 0;  // calls that could have failed, as long as the failure was armed
    std::string failed;        // the call that the armed failure hit, as recorded
    std::vector<std::string> problems;  // empty: the run was as it should be
};

RunReport run(const Scenario& scenario, const std::optional<Arming>& arming);

// Without failures the library works as before, its log included.
void checkNextCall(System& system, const Exports& library, const Scenario& scenario,
                   std::vector<std::string>& problems);

// What is wrong with the machine and the job after the steps ran: buffers, record, log lines,
// complaints, handles. `library` is gone by then, so that what it keeps for itself is closed.
std::vector<std::string> problemsAfter(const System& system, const Scenario& scenario,
                                       const Job& job, const VKDATA& before);

}  // namespace vok::test
