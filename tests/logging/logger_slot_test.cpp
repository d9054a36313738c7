// The installed logger under threads: nobody is left with what another call took away.
#include "logging/logger_slot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "logging/xfiles_logger.h"
#include "option_logger.h"
#include "support/expect_thrown.h"
#include "support/log_scope.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess loggerSlotProcess{"LogSetUp", "the count of set-ups is left as the test makes it"};

bool isInstalled() {
    return loggerSlot().use().logger != nullptr;
}

TEST(LoggerSlot, KeepsTheFirstLogger) {
    SimulatedMachine machine;
    const auto first = std::make_shared<OptionLogger>("First.log");
    LoggerSlot slot;
    EXPECT_TRUE(slot.install(first));
    EXPECT_FALSE(slot.install(std::make_shared<OptionLogger>("Second.log")));
    EXPECT_EQ(slot.use().logger, first);
    EXPECT_EQ(machine.system.mutexes.find("ZELOG_Second.log"), nullptr);
    slot.clear();
    EXPECT_EQ(slot.use().logger, nullptr);
    EXPECT_EQ(slot.use().category, nullptr);
}

TEST(LoggerSlot, ALoggerWithoutACategoryIsNotThereYet) {
    SimulatedMachine machine;
    ASSERT_TRUE(loggerSlot().install(std::make_shared<OptionLogger>()));
    expectThrown([] { BasicLogger::getInstance(); }, "BasicLogger::getInstance()", 1, "", 0);
    logLine("lost");
    loggerSlot().clear();
    EXPECT_TRUE(machine.system.files.paths().empty());
}

TEST(LoggerSlot, WhatIsInUseOutlivesItsRelease) {
    SimulatedMachine machine;
    machine.system.startLog();
    std::optional<LogScope> scope(std::in_place);
    LoggerInUse inUse = loggerInUse();
    scope.reset();
    EXPECT_FALSE(isInstalled());
    EXPECT_EQ(inUse.category->name(), "VOK");
    inUse.logger->write(inUse.category, 8, "still there");
    expectMessages(machine.system, {"still there"});
    inUse = {};
    expectNoLeaks(machine.system);
}

TEST(LogSetUpCount, AFailedOneMakesTheNextLoggerStay) {
    SimulatedMachine machine;
    {
        const LogScope withoutConfiguration;
    }
    machine.system.startLog();
    {
        const LogScope scope;
    }
    ASSERT_TRUE(isInstalled());
    const auto logger = BasicLogger::getInstance();
    {
        const LogScope scope;
        logLine("a line");
    }
    EXPECT_EQ(BasicLogger::getInstance(), logger);
    // Its category was the first scope's, which is gone.
    logLine("between calls");
    expectMessages(machine.system, {"a line", "between calls"});
    EXPECT_EQ(machine.system.calls.count("CreateMutexA"), 1U);
}

TEST(LogSetUpCount, BelowZeroTheFirstOfTwoOverlappingCallsTakesTheLoggerAway) {
    SimulatedMachine machine;
    {
        const LogScope withoutConfiguration;
    }
    machine.system.startLog();
    std::optional<LogScope> first(std::in_place);
    std::optional<LogScope> second(std::in_place);
    logLine("both");
    second.reset();
    EXPECT_FALSE(isInstalled());
    logLine("lost");
    EXPECT_NO_THROW(traceCallQuietly("lost"));
    first.reset();
    expectMessages(machine.system, {"both"});
    expectNoLeaks(machine.system);
}

TEST(LogSetUpCount, TheMakersEndLeavesTheLoggerToTheOther) {
    SimulatedMachine machine;
    machine.system.startLog();
    std::optional<LogScope> maker(std::in_place);
    std::optional<LogScope> other(std::in_place);
    maker.reset();
    logLine("of the other");
    expectMessages(machine.system, {"of the other"});
    other.reset();
    EXPECT_FALSE(isInstalled());
}

constexpr int threads = 4;

// Where all threads meet before they go on.
class Meeting {
  public:
    void arriveAndWait() {
        ++arrived_;
        while (arrived_ < threads) {
            std::this_thread::yield();
        }
    }

  private:
    std::atomic<int> arrived_ = 0;
};

// Runs `work` on some threads that begin together.
template <class Work>
void onThreads(const Work& work) {
    Meeting begin;
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&] {
            begin.arriveAndWait();
            work();
        });
    }
}

TEST(LogSetUpThreads, MakeOneLoggerTogether) {
    SimulatedMachine machine;
    machine.system.startLog();
    Meeting made;
    onThreads([&] {
        const LogScope scope;
        made.arriveAndWait();
        logLine("a line");
    });
    EXPECT_EQ(machine.system.calls.count("CreateMutexA"), 1U);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 1U);
    EXPECT_FALSE(isInstalled());
    EXPECT_EQ(machine.system.logLines(), Lines(threads, "VOK        a line"));
    expectNoLeaks(machine.system);
}

TEST(LogSetUpThreads, ComeAndGoWithoutADeadPointer) {
    constexpr int calls = 50;
    SimulatedMachine machine;
    machine.system.startLog();
    machine.system.calls.on = false;
    onThreads([] {
        for (int call = 0; call < calls; ++call) {
            const LogScope scope;
            traceCallQuietly("call");
            logLine("a line");
        }
    });
    EXPECT_FALSE(isInstalled());
    EXPECT_EQ(machine.system.files.lines(machine.system.logPath()).size(),
              std::size_t{3} * threads * calls);
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
    expectNoLeaks(machine.system);
    EXPECT_EQ(machine.system.sids, 0);
}

TEST(LogSetUpThreads, FailedOnesInBetweenLeaveNoDeadPointerEither) {
    constexpr int calls = 50;
    SimulatedMachine machine;
    machine.system.startLog();
    machine.system.calls.on = false;
    for (int i = 1; i <= calls; i += 3) {
        machine.system.faults.fail("GetConfigData", 0, static_cast<std::size_t>(i));
    }
    onThreads([] {
        for (int call = 0; call < calls; ++call) {
            const LogScope scope;
            traceCallQuietly("call");
            logLine("a line");
        }
    });
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
    EXPECT_TRUE(machine.system.complaints.empty());
    for (const std::string& line : machine.system.logLines()) {
        EXPECT_TRUE(line == "VOK        a line" || line == "VOK        +call" ||
                    line == "VOK        -call")
            << line;
    }
}

TEST(LogThreads, WriteWholeLinesAndIndentTheirOwn) {
    constexpr int lines = 100;
    SimulatedMachine machine;
    machine.system.calls.on = false;
    OptionLogger logger;
    logger.options = {{"Clocktime_In_Header", 0}};
    const LogCategory category("VOK", 0);
    std::atomic<int> next = 0;
    onThreads([&] {
        const int depth = next++;
        for (int i = 0; i < depth; ++i) {
            logger.increaseDepth();
        }
        for (int i = 0; i < lines; ++i) {
            logger.write(&category, 0, std::to_string(depth) + std::string(100, 'x'));
        }
    });
    std::vector<int> counts(threads);
    for (const std::string& line : machine.system.files.lines(R"(C:\Test.log)")) {
        const std::size_t depth = line.find_first_not_of(' ', 3) - 11;
        ASSERT_LT(depth, std::size_t{threads});
        EXPECT_EQ(line.substr(11 + depth), std::to_string(depth) + std::string(100, 'x'));
        ++counts[depth];
    }
    EXPECT_EQ(counts, std::vector<int>(threads, lines));
}

}  // namespace
}  // namespace vok::test
