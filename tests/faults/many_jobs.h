// Jobs of many threads at once on one simulated machine, each with answers of its own.
#pragma once
#include <atomic>
#include <ostream>

#include "faults/restarted_library.h"

namespace vok::test {

constexpr size_t jobThreads = 16;
constexpr size_t jobPrinters = 8;

enum class Route { windows, pipes };
inline std::ostream& operator<<(std::ostream& out, Route route) {
    return out << (route == Route::windows ? "windows" : "pipes");
}

class ManyJobs {
  public:
    // Two threads share each printer, as its pipes have two instances.
    ManyJobs(System& system, Route route);

    // Every thread does its jobs, one after another; returns when all are done.
    void run(const Exports& library, size_t jobsOfEach);

    size_t wrongAnswers() const { return wrong_; }
    size_t answers() const { return right_; }
    size_t callsOfEachJob() const { return 6; }

  private:
    void doJob(const Exports& library, size_t printer, LONG number);
    void expect(LONG is, LONG wanted) { ++(is == wanted ? right_ : wrong_); }

    Route route_;
    std::atomic<size_t> wrong_ = 0;
    std::atomic<size_t> right_ = 0;
};

}  // namespace vok::test
