// Which records are written, and how long an option's value holds.
#include <gtest/gtest.h>

#include <cstdint>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "option_logger.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess logOptionsProcess{"IsEnabled.TheCommonMaskLastRead",
                                   "no logger may have read the common mask before"};

constexpr std::uint32_t age = BasicLogger::optionAge;

TEST(IsEnabled, WithLoggingOffOnlyCriticalRecordsPass) {
    SimulatedMachine machine;
    OptionLogger logger;
    const LogCategory category("C", LEVEL_ALL);
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_CRITICAL));
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_CRITICAL | LEVEL_DETAIL));
    EXPECT_TRUE(logger.reads.empty());
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_TRACE));
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_EQ(logger.reads, (Lines{"startLog", "startLog"}));
}

TEST(IsEnabled, WithoutTheCommonMaskEveryRecordPasses) {
    SimulatedMachine machine;
    OptionLogger logger;
    logger.options = {{"startLog", 1}, {"C", 0}};
    const LogCategory category("C", LEVEL_CRITICAL);
    for (const std::uint32_t level : {2U, 4U, 8U, 16U, 0x80000000U}) {
        EXPECT_TRUE(logger.isEnabled(&category, level)) << level;
    }
}

TEST(IsEnabled, WithTheCommonMaskOffTheCategorysDecides) {
    SimulatedMachine machine;
    OptionLogger logger;
    logger.options = {{"startLog", 1}, {"All", 0}, {"C", LEVEL_TRACE}};
    const LogCategory category("C", LEVEL_ALL);
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_TRACE));
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_FALSE(logger.isEnabled(&category, 0));
    logger.options["All"] = LEVEL_DETAIL;
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_TRACE));
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_4));
}

TEST(IsEnabled, ACategoryWithoutAnOptionUsesItsDefaultMask) {
    SimulatedMachine machine;
    OptionLogger logger;
    logger.options = {{"startLog", 1}, {"All", 0}};
    const LogCategory category("C", LEVEL_DETAIL);
    EXPECT_TRUE(logger.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_TRACE));
}

TEST(IsEnabled, ReadsStartThenAllThenTheCategory) {
    SimulatedMachine machine;
    OptionLogger logger;
    logger.options["startLog"] = 1;
    const LogCategory category("C", LEVEL_ALL);
    logger.isEnabled(&category, LEVEL_DETAIL);
    EXPECT_EQ(logger.reads, (Lines{"startLog", "All", "C"}));
}

TEST(IsEnabled, AnOptionThatCannotBeReadKeepsItsPreset) {
    SimulatedMachine machine;
    OptionLogger logger;
    const LogCategory category("C", LEVEL_ALL);
    logger.options = {{"startLog", 1}, {"All", 0}};
    logger.unreadable = {"C"};
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_DETAIL));
    logger.unreadable = {"startLog"};
    EXPECT_FALSE(logger.isEnabled(&category, LEVEL_DETAIL));
}

TEST(IsEnabled, TheCommonMaskLastReadByAnyLoggerIsTheNextOnesPreset) {
    SimulatedMachine machine;
    OptionLogger first;
    first.options = {{"startLog", 1}, {"All", 0}, {"C", 0}};
    OptionLogger second("Other.log");
    second.options = {{"startLog", 1}, {"C", 0}};
    second.unreadable = {"All"};
    const LogCategory category("C", 0);
    EXPECT_FALSE(second.isEnabled(&category, LEVEL_DETAIL));
    first.options["All"] = LEVEL_DETAIL;
    EXPECT_TRUE(first.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_TRUE(second.isEnabled(&category, LEVEL_DETAIL));
    first.options["All"] = LEVEL_TRACE;
    EXPECT_FALSE(first.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_FALSE(second.isEnabled(&category, LEVEL_DETAIL));
}

class CachedOption : public ::testing::Test {
  protected:
    std::uint32_t read() {
        std::uint32_t value = 0;
        logger.getCachedOption("x", &value, 7, age);
        return value;
    }

    SimulatedMachine machine;
    OptionLogger logger;
};

TEST_F(CachedOption, IsReadAgainAfterFiveSeconds) {
    EXPECT_EQ(read(), 7U);
    logger.options["x"] = 8;
    machine.system.clock.advance(1);
    EXPECT_EQ(read(), 7U);
    machine.system.clock.advance(4998);
    EXPECT_EQ(read(), 7U);
    EXPECT_EQ(logger.reads.size(), 1U);
    machine.system.clock.advance(1);
    EXPECT_EQ(read(), 8U);
    EXPECT_EQ(logger.reads.size(), 2U);
}

TEST_F(CachedOption, IsReadAgainWithinTheTickItWasRead) {
    read();
    logger.options["x"] = 8;
    EXPECT_EQ(read(), 8U);
}

TEST_F(CachedOption, IsReadAgainAfterTheTickCounterBeganAnew) {
    machine.system.clock.setTick(0xFFFFFFFF);
    read();
    machine.system.clock.setTick(0);
    logger.options["x"] = 8;
    EXPECT_EQ(read(), 8U);
}

TEST_F(CachedOption, OneThatCannotBeReadIsCachedAsItWasPreset) {
    logger.unreadable = {"x"};
    EXPECT_EQ(read(), 0U);
    logger.unreadable.clear();
    machine.system.clock.advance(1);
    EXPECT_EQ(read(), 0U);
    machine.system.clock.advance(age);
    EXPECT_EQ(read(), 7U);
}

TEST_F(CachedOption, NamesCountByCaseAndLoggersApart) {
    read();
    machine.system.clock.advance(1);
    std::uint32_t value = 0;
    logger.getCachedOption("X", &value, 9, age);
    EXPECT_EQ(value, 9U);
    OptionLogger other("Other.log");
    other.getCachedOption("x", &value, 5, age);
    EXPECT_EQ(value, 5U);
}

}  // namespace
}  // namespace vok::test
