// The simulated machine with a printer whose companions run, and one call on it.
#pragma once
#include <string>
#include <vector>

#include "cases.h"
#include "sim/sim.h"

namespace vok::bench {

// The library, or the floor, on a simulated machine of its own, ready for the call of a case.
class SimulatedJob {
  public:
    // `file`: the module to load. ticking: every look at the clock finds it one millisecond later,
    // so that options come from the cache; else they are read anew at each use.
    SimulatedJob(const std::string& file, const Case& one, Logging logging, bool ticking);

    // Makes the call.
    LONG_PTR perform();

    // What the call asked of the system. The compiler's runtime looks its thread's data up between
    // reading the last error and setting it again, which the library itself never does: such pairs
    // are not counted.
    std::vector<test::CallRecord> calls() const;
    const VKDATA& record() const { return record_; }

  private:
    void makeCompanions();
    void openPipes();

    const Case one_;
    test::System system_;
    Job job_;
    test::LoadedModule module_;
    Exports exports_;
    VKDATA record_;
};

// Where the floor lies.
std::string floorDll();

}  // namespace vok::bench
