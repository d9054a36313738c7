// The simulated machine under the library's sources, for tests of its classes and functions.
#pragma once

#include "sim/sim.h"
#include "support/os_version.h"

namespace vok::test {

// For as long as it lives, the test program's own imports lead to the simulated system, and the
// version that the library read at load is that system's. What the library keeps for good (the
// critical log, a failure of all logging, the count of set-ups) stays from one machine to the next:
// a test that changes any of it is marked as an OwnProcess.
class SimulatedMachine {
  public:
    explicit SimulatedMachine(const OsRelease& release = os::winXp) : system(release) {
        rereadVersion();
    }

    // After a change of system.os. The call is not left in the record.
    void rereadVersion() {
        const OsVersion read;
        system.calls.clear();
    }

    System system;

  private:
    SimulatedProcess process_;
};

}  // namespace vok::test
