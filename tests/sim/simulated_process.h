// Puts the simulation's functions into the test program's own import table, for tests that link
// the library's sources. What is not simulated (GoogleTest's output, the runtime's handles) goes on
// to the real system.
#pragma once
#include "import_table.h"

namespace vok::test {

class SimulatedProcess {
  public:
    SimulatedProcess();

  private:
    ImportTable table_;
};

}  // namespace vok::test
