// Every allocation of every scenario fails once, and from then on for ever: nothing but the
// standard library's own exception leaves the library, nothing is damaged, and the next call works.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "faults/run.h"
#include "faults/watched_heap.h"

namespace vok::test {
namespace {

constexpr size_t problemsShown = 5;
constexpr size_t noFailure = 0;

RestartedLibrary& libraryOnWatchedHeap() {
    static RestartedLibrary library(heap::overrides());
    return library;
}

class AllocationSweep : public ::testing::TestWithParam<Scenario> {
  protected:
    using Problems = std::vector<std::string>;

    // Runs with the k-th allocation failing; false when there was no such allocation.
    bool runOnce(size_t k, Lasting lasting) {
        Job job("Office", GetParam().port);
        System system(GetParam().os);
        prepareMachine(system, GetParam());
        GetParam().prepare(system, job.record());
        const VKDATA before = job.record();
        Problems problems;
        bool fired = false;
        {
            const Started library(libraryOnWatchedHeap());
            system.calls.clear();
            heap::fail(k, lasting);
            callAll(*library, job, problems);
            fired = heap::failed() > 0;
            allocations_ = heap::attempted();
            heap::failNothing();
            checkNextCall(system, *library, GetParam(), problems);
        }
        checkMemory(fired, problems);
        addTo(problems, problemsAfter(system, GetParam(), job, before));
        addTo(problems, heap::damage());
        heap::clear();
        note(problems, k, lasting, fired);
        return fired;
    }

    void callAll(const Exports& library, Job& job, Problems& problems) {
        for (const Step& step : GetParam().steps) {
            try {
                perform(library, step, job);
            } catch (const std::bad_alloc&) {
                ++thrown_;
            } catch (...) {
                problems.emplace_back("an exception other than std::bad_alloc");
            }
        }
    }

    // What a stopped library leaves is its runtime's, and a descriptor for each pipe; a first
    // exception leaves its thread's record.
    void checkMemory(bool fired, Problems& problems) {
        constexpr size_t exceptionRecord = 1;
        const size_t left = heap::liveSizes().size();
        if (!fired && leftByHealthyRun_ == 0) {
            leftByHealthyRun_ = left;
        }
        if (left > leftByHealthyRun_ + exceptionRecord) {
            problems.push_back("blocks left: " + std::to_string(left) + " instead of " +
                               std::to_string(leftByHealthyRun_));
        }
    }

    static void addTo(Problems& problems, const Problems& more) {
        problems.insert(problems.end(), more.begin(), more.end());
    }

    void note(const Problems& problems, size_t k, Lasting lasting, bool fired) {
        injected_ += fired ? 1 : 0;
        if (problems.empty()) {
            survived_ += fired ? 1 : 0;
        } else if (++shown_ <= problemsShown) {
            ADD_FAILURE() << (lasting == Lasting::once ? "once" : "for ever") << ", allocation "
                          << k << ": " << problems.front();
        }
    }

    void sweep(Lasting lasting) {
        EXPECT_FALSE(runOnce(noFailure, lasting));
        for (size_t k = 1; runOnce(k, lasting); ++k) {
        }
        std::printf("%s: allocations: %zu, failures injected: %zu, survived: %zu, thrown: %zu\n",
                    GetParam().name.c_str(), allocations_, injected_, survived_, thrown_);
        EXPECT_EQ(injected_, survived_);
        EXPECT_GT(injected_, 0u);
    }

    size_t leftByHealthyRun_ = 0;
    size_t allocations_ = 0;  // of the last run
    size_t injected_ = 0;
    size_t survived_ = 0;
    size_t thrown_ = 0;
    size_t shown_ = 0;
};

TEST_P(AllocationSweep, Once) {
    sweep(Lasting::once);
}

TEST_P(AllocationSweep, ForEver) {
    sweep(Lasting::forEver);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, AllocationSweep, ::testing::ValuesIn(scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

bool saysSo(const System& system) {
    const Lines lines = system.files.lines(system.logPath());
    return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("Module::UnLoad() | Failed to Unloadlibrary") != std::string::npos;
    });
}

// Two troubles at once. The line that tells of the first takes memory, in a destructor.
TEST(AllocationSweep, ConfigurationThatCannotBeUnloaded) {
    bool fired = true;
    for (size_t k = 1; fired; ++k) {
        System system(os::winXp);
        system.startLog();
        VKDATA record{};
        {
            const Started library(libraryOnWatchedHeap());
            system.faults.fail("FreeLibrary", 0, 1, Lasting::forEver);
            heap::fail(k, Lasting::once);
            try {
                library->sendDralMsg("", SM_STARTPAGE, &record);
            } catch (const std::bad_alloc&) {
                EXPECT_GT(heap::failed(), 0U) << k;
            }
            fired = heap::failed() > 0;
            heap::failNothing();
            EXPECT_GT(system.faults.fired(), 0U) << k;
            library->sendDralMsg("", SM_STARTPAGE, &record);
            EXPECT_TRUE(saysSo(system)) << k;
        }
        EXPECT_EQ(heap::damage(), std::vector<std::string>()) << k;
        heap::clear();
    }
}

}  // namespace
}  // namespace vok::test
