// Every system call of every scenario fails once, and from then on for ever, in every way in which
// that call can fail: whatever fails, the job goes on as it should.
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "faults/run.h"

namespace vok::test {
namespace {

constexpr size_t problemsShown = 5;
// More ways than any function has: a scenario's sweep ends earlier.
constexpr size_t mostWays = 8;

class FaultSweep : public ::testing::TestWithParam<Scenario> {
  protected:
    // The k-th call fails in every way it has, one run for each.
    void failCall(size_t k, Lasting lasting) {
        for (size_t way = 0; way < mostWays; ++way) {
            const RunReport report = run(GetParam(), Arming{k, way, lasting});
            if (report.fired == 0) {
                ended_ = true;
                return;
            }
            const std::string function = report.failed.substr(0, report.failed.find('('));
            note(report, k, way, lasting);
            if (way + 1 >= failureCount(function)) {
                return;
            }
        }
    }

    void note(const RunReport& report, size_t k, size_t way, Lasting lasting) {
        ++injected_;
        if (report.problems.empty()) {
            ++survived_;
        } else if (++shown_ <= problemsShown) {
            ADD_FAILURE() << (lasting == Lasting::once ? "once" : "for ever") << ", call " << k
                          << ", way " << way << ": " << report.failed << "\n  "
                          << report.problems.front();
        }
    }

    void sweep(Lasting lasting) {
        const RunReport healthy = run(GetParam(), std::nullopt);
        EXPECT_EQ(healthy.problems, std::vector<std::string>()) << "without a failure";
        for (size_t k = 1; !ended_; ++k) {
            failCall(k, lasting);
        }
        std::printf("%s: calls that can fail: %zu, faults injected: %zu, survived: %zu\n",
                    GetParam().name.c_str(), healthy.failableCalls, injected_, survived_);
        EXPECT_EQ(injected_, survived_);
        EXPECT_GE(injected_, healthy.failableCalls / 2);
    }

    bool ended_ = false;
    size_t injected_ = 0;
    size_t survived_ = 0;
    size_t shown_ = 0;
};

TEST_P(FaultSweep, Once) {
    sweep(Lasting::once);
}

TEST_P(FaultSweep, ForEver) {
    sweep(Lasting::forEver);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweep, ::testing::ValuesIn(scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

}  // namespace
}  // namespace vok::test
