#include "support/critical_section.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "simulated_machine.h"

namespace vok::test {
namespace {

TEST(CriticalSection, DepthCountsEntriesMinusLeaves) {
    CriticalSection section;
    EXPECT_EQ(section.depth(), 0U);
    section.enter();
    section.enter();
    EXPECT_EQ(section.depth(), 2U);
    section.leave();
    EXPECT_EQ(section.depth(), 1U);
    section.leave();
    EXPECT_EQ(section.depth(), 0U);
}

TEST(CriticalSectionLock, IsInsideForAsLongAsItLives) {
    CriticalSection section;
    {
        const CriticalSectionLock outer(&section);
        const CriticalSectionLock inner(&section);
        EXPECT_EQ(section.depth(), 2U);
    }
    EXPECT_EQ(section.depth(), 0U);
}

TEST(CriticalSection, IsInitialisedEnteredLeftAndDeleted) {
    SimulatedMachine machine;
    const long initialised = lockCounts().initialised;
    const long entered = lockCounts().entered;
    const long left = lockCounts().left;
    const long deleted = lockCounts().deleted;
    {
        CriticalSection section;
        section.enter();
        section.leave();
    }
    EXPECT_EQ(lockCounts().initialised - initialised, 1);
    EXPECT_EQ(lockCounts().entered - entered, 1);
    EXPECT_EQ(lockCounts().left - left, 1);
    EXPECT_EQ(lockCounts().deleted - deleted, 1);
}

TEST(CriticalSection, KeepsThreadsApart) {
    constexpr int threads = 4;
    constexpr int rounds = 5000;
    CriticalSection section;
    int inside = 0;
    int most = 0;
    int total = 0;
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const CriticalSectionLock lock(&section);
                most = std::max(most, ++inside);
                ++total;
                --inside;
            }
        });
    }
    running.clear();
    EXPECT_EQ(most, 1);
    EXPECT_EQ(total, threads * rounds);
    EXPECT_EQ(section.depth(), 0U);
}

}  // namespace
}  // namespace vok::test
