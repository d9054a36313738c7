#include "logging/function_trace.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "option_logger.h"
#include "support/expect_thrown.h"
#include "support/log_scope.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

class Tracing : public ::testing::Test {
  protected:
    Tracing() {
        logger.options = {{"startLog", 1}, {"Clocktime_In_Header", 0}};
        machine.system.calls.clear();
    }
    Lines written() { return machine.system.files.lines(R"(C:\Test.log)"); }
    void write(const char* text) { logger.write(&category, LEVEL_DETAIL, text); }

    SimulatedMachine machine;
    OptionLogger logger;
    LogCategory category{"VOK", LEVEL_ALL};
};

TEST_F(Tracing, NestedTracesIndentWhatIsBetweenTheirRecords) {
    {
        const FunctionTrace outer(&logger, &category, "outer", LEVEL_TRACE, true);
        write("in outer");
        {
            const FunctionTrace inner(&logger, &category, "inner", LEVEL_TRACE, true);
            write("in inner");
        }
    }
    write("after");
    EXPECT_EQ(written(), (Lines{"VOK        +outer", "VOK         in outer", "VOK         +inner",
                                "VOK          in inner", "VOK         -inner", "VOK        -outer",
                                "VOK        after"}));
}

TEST_F(Tracing, OneThatIsNotActiveWritesNothing) {
    {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_CRITICAL, false);
    }
    EXPECT_TRUE(written().empty());
    EXPECT_TRUE(logger.reads.empty());
}

TEST_F(Tracing, OneThatIsNotEnabledWritesNothing) {
    logger.options["startLog"] = 0;
    {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
    }
    EXPECT_TRUE(written().empty());
    EXPECT_EQ(logger.reads, Lines{"startLog"});
    EXPECT_EQ(logger.getDepth(::GetCurrentThreadId()), 0);
}

TEST_F(Tracing, OneThatStartedEnabledWritesItsEndWhateverTheOptions) {
    {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
        logger.options["startLog"] = 0;
    }
    EXPECT_EQ(written(), (Lines{"VOK        +name", "VOK        -name"}));
}

TEST_F(Tracing, TheReturnCodeFollowsTheName) {
    {
        FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
        trace.setReturnCode("YESPRINT");
    }
    EXPECT_EQ(written().back(), "VOK        -name rc=YESPRINT");
}

TEST_F(Tracing, ARecordThatCannotBeWrittenAtTheBeginningIsThrown) {
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([&] { const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true); },
                 "Mutex::acquire() WaitForSingleObject failed", 6, "Mutex", 123);
    EXPECT_EQ(logger.getDepth(::GetCurrentThreadId()), 0);
}

TEST_F(Tracing, ARecordThatCannotBeWrittenAtTheEndIsLost) {
    {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
        machine.system.faults.fail("WaitForSingleObject");
    }
    EXPECT_EQ(written(), Lines{"VOK        +name"});
    EXPECT_EQ(logger.getDepth(::GetCurrentThreadId()), 0);
}

TEST_F(Tracing, TheEndIsWrittenWhileAnotherExceptionIsOnItsWay) {
    const auto work = [&] {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
        throw std::runtime_error("on its way");
    };
    EXPECT_THROW(work(), std::runtime_error);
    EXPECT_EQ(written().back(), "VOK        -name");
    const auto failing = [&] {
        const FunctionTrace trace(&logger, &category, "name", LEVEL_TRACE, true);
        machine.system.faults.fail("ReleaseMutex");
        throw std::runtime_error("on its way");
    };
    EXPECT_THROW(failing(), std::runtime_error);
}

TEST(TraceCall, WithoutALoggerThrowsOrKeepsQuiet) {
    SimulatedMachine machine;
    expectThrown([] { traceCall("name"); }, "BasicLogger::getInstance()", 1, "", 0);
    EXPECT_NO_THROW(traceCallQuietly("name"));
}

TEST(TraceCall, WritesEntryAndExitAtOnce) {
    SimulatedMachine machine;
    machine.system.startLog();
    const LogScope scope;
    traceCall("name");
    traceCallQuietly("other");
    expectMessages(machine.system, {"+name", "-name", "+other", "-other"});
}

TEST(TraceCall, AsksTwiceWhetherItIsEnabled) {
    SimulatedMachine machine;
    machine.system.startLog();
    const LogScope scope;
    machine.system.calls.clear();
    machine.system.registry.setNumber(machine.system.loggerKey(), "startLog", 0);
    traceCall("name");
    expectCallsOf(machine.system, "RegQueryValueExA",
                  {R"(RegQueryValueExA(options#4, "startLog", null, out, out, 4) = 0 -> 0)",
                   R"(RegQueryValueExA(options#6, "startLog", null, out, out, 4) = 0 -> 0)"});
    EXPECT_FALSE(machine.system.files.exists(machine.system.logPath()));
}

TEST(TraceCall, ARecordThatCannotBeWrittenIsThrownOrDropped) {
    SimulatedMachine machine;
    machine.system.startLog();
    const LogScope scope;
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([] { traceCall("name"); }, "Mutex::acquire() WaitForSingleObject failed", 6,
                 "Mutex", 123);
    machine.system.faults.fail("WaitForSingleObject");
    EXPECT_NO_THROW(traceCallQuietly("name"));
}

}  // namespace
}  // namespace vok::test
