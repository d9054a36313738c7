// A simulated machine on which messages are logged.
#pragma once

#include <optional>

#include "support/log_scope.h"
#include "support/simulated_machine.h"

namespace vok::test {

// The logging is set up as an export does it; the calls of that are not in the record.
class LoggedMachine : public SimulatedMachine {
  public:
    explicit LoggedMachine(const OsRelease& release = os::winXp) : SimulatedMachine(release) {
        system.startLog();
        scope_.emplace();
        system.calls.clear();
    }

  private:
    std::optional<LogScope> scope_;
};

}  // namespace vok::test
