#include "logging/log_line.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "support/log_scope.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess logLineProcess{"LogLine.ACriticalRecordThatCannotBeMade",
                                "a critical record binds the critical log for good"};

class LogLine : public ::testing::Test {
  protected:
    LogLine() {
        machine.system.startLog();
        scope.emplace();
        machine.system.calls.clear();
    }

    SimulatedMachine machine;
    std::optional<LogScope> scope;
};

TEST_F(LogLine, WritesAtTheDetailLevel) {
    logLine("a line");
    logPrintf("%s %u%%", "printed", 100U);
    expectMessages(machine.system, {"a line", "printed 100%"});
}

TEST_F(LogLine, JoinsPartsWithNothingBetween) {
    const std::string text(200, 'x');
    logLine({"OPENJOB SendMessage rc = ", std::string("7"), ""});
    logLine({text, " ", text});
    logLine({});
    expectMessages(machine.system, {"OPENJOB SendMessage rc = 7", text + " " + text, ""});
}

TEST_F(LogLine, NothingIsWrittenWithoutALogger) {
    scope.reset();
    machine.system.calls.clear();
    logLine("lost");
    logLine({"lost", "too"});
    logPrintf("%s", "lost");
    EXPECT_TRUE(machine.system.calls.all().empty());
}

TEST_F(LogLine, TheMasksDecide) {
    machine.system.registry.setNumber(machine.system.loggerKey(), "All", 2);
    machine.system.registry.setNumber(machine.system.loggerKey(), "VOK", 4);
    logLine("lost");
    logPrintf("%s", "lost");
    EXPECT_FALSE(machine.system.files.exists(machine.system.logPath()));
    machine.system.registry.setNumber(machine.system.loggerKey(), "VOK", 12);
    logLine("kept");
    logPrintf("%s", "kept too");
    expectMessages(machine.system, {"kept", "kept too"});
}

TEST_F(LogLine, AreNeverCutButPrintedOnesAreAt511) {
    const std::string text(1000, 'x');
    logLine(text);
    logPrintf("%s", text.c_str());
    logPrintf("%s", text.substr(0, 511).c_str());
    logPrintf("%s", text.substr(0, 510).c_str());
    expectMessages(machine.system,
                   {text, text.substr(0, 511), text.substr(0, 511), text.substr(0, 510)});
}

TEST_F(LogLine, PrintedPointersAreTheRuntimes) {
    logPrintf("0x%p", reinterpret_cast<void*>(0xDEADBEEF));
    expectMessages(machine.system, {"0x00000000DEADBEEF"});
}

TEST_F(LogLine, ALineThatCannotBeWrittenIsLostAndNothingElse) {
    const std::pair<const char*, Failure> failures[] = {
        {"WaitForSingleObject", {static_cast<LONG_PTR>(WAIT_FAILED), 6}},
        {"ReleaseMutex", {FALSE, 288}},
        {"CreateFileA", {-1, 5}},
        {"WriteFile", {FALSE, 112}},
        {"SetFilePointer", {-1, 131}},
        {"GetFileSize", {-1, 6}},
        {"CloseHandle", {FALSE, 6}},
        {"RegQueryValueExA", {5}},
        {"RegOpenKeyExA", {5}}};
    for (const auto& [function, failure] : failures) {
        machine.system.faults.fail(function, failure);
        EXPECT_NO_THROW(logLine("a line")) << function;
        machine.system.faults.fail(function, failure);
        EXPECT_NO_THROW(logPrintf("%s", "a line")) << function;
    }
    EXPECT_EQ(machine.system.faults.fired(), 2 * std::size(failures));
    machine.system.files.remove(machine.system.logPath());
    logLine("the next");
    expectMessages(machine.system, {"the next"});
}

TEST_F(LogLine, ACriticalRecordThatCannotBeMadeIsLostToo) {
    machine.system.registry.deny(machine.system.loggerKey());
    machine.system.faults.fail("AllocateAndInitializeSid", 0, 3, Lasting::forEver);
    EXPECT_NO_THROW(logLine("lost"));
    machine.system.faults.clear();
    machine.system.registry.allow(machine.system.loggerKey());
    logLine("the next");
    expectMessages(machine.system, {"the next"});
}

}  // namespace
}  // namespace vok::test
