// The options of the exported calls' logger, in the registry.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "logging/log_line.h"
#include "logging/logger_slot.h"
#include "logging/xfiles_logger.h"
#include "support/expect_thrown.h"
#include "support/log_scope.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess registryOptionsProcess{"RegistryOptions.",
                                        "critical records bind the critical log for good"};
const OwnProcess registryOptionsProcessToo{
    "CriticalName.", "the critical log and its growing name stay as long as the process lives"};

constexpr const char* reading = "XFilesLogger::getOption() ";
// The ordinary log's, and after one set-up the critical log's too.
constexpr const char* ownLog = R"(C:\DEMOVok.log)";

class RegistryOptions : public ::testing::Test {
  protected:
    RegistryOptions() {
        machine.system.startLog();
        scope.emplace();
        machine.system.calls.clear();
    }
    std::uint32_t read(const char* name, std::uint32_t preset, std::uint32_t defaultValue) {
        std::uint32_t value = preset;
        BasicLogger::getInstance()->getOption(name, &value, defaultValue);
        return value;
    }
    std::string key() { return machine.system.loggerKey(); }

    SimulatedMachine machine;
    std::optional<LogScope> scope;
};

TEST_F(RegistryOptions, AreReadFromTheirKey) {
    machine.system.registry.setNumber(key(), "x", 5);
    EXPECT_EQ(read("x", 7, 9), 5U);
    EXPECT_EQ(machine.system.calls.count("RegSetValueExA"), 0U);
    EXPECT_EQ(machine.system.calls.count("RegCloseKey"), 2U);
    EXPECT_FALSE(machine.system.files.exists(ownLog));
}

TEST_F(RegistryOptions, AMissingOneIsMadeWithItsDefault) {
    EXPECT_EQ(read("x", 7, 9), 9U);
    EXPECT_EQ(machine.system.registry.number(key(), "x"), 9U);
    expectNoLeaks(machine.system, {"mutex#1"});
}

TEST_F(RegistryOptions, AMissingKeyIsMadeAnewBelowItsBase) {
    machine.system.registry.removeKey(key());
    EXPECT_EQ(read("x", 7, 9), 9U);
    EXPECT_EQ(machine.system.registry.number(key(), "x"), 9U);
}

TEST_F(RegistryOptions, EachFailureKeepsThePresetAndWritesOneCriticalRecord) {
    const struct {
        const char* function;
        std::size_t nth;
        Failure failure;
    } failures[] = {
        {"RegOpenKeyExA", 1, {5}}, {"RegQueryValueExA", 1, {1018}}, {"RegSetValueExA", 1, {1018}}};
    Lines expected;
    for (const auto& failure : failures) {
        machine.system.faults.fail(failure.function, failure.failure, failure.nth);
        EXPECT_EQ(read("missing", 7, 9), 7U) << failure.function;
        expected.push_back(std::string(reading) + "RegistryKey64() exception error=" +
                           std::to_string(failure.failure.result));
        expectLog(machine.system, ownLog, expected);
    }
    expectNoLeaks(machine.system, {"mutex#1", "mutex#2"});
}

TEST_F(RegistryOptions, OneThatIsTextKeepsThePreset) {
    machine.system.registry.setText(key(), "x", "some text");
    EXPECT_EQ(read("x", 7, 9), 7U);
    machine.system.registry.setText(key(), "x", "abc");
    EXPECT_EQ(read("x", 7, 9), 7U);
    expectLog(machine.system, ownLog,
              {std::string(reading) + "RegistryKey64() exception error=234",
               std::string(reading) + "RegistryKey64() exception error=0"});
}

TEST_F(RegistryOptions, AStartThatIsTextLeavesTheLogOff) {
    machine.system.registry.setText(key(), "startLog", "yes");
    logLine("lost");
    expectLog(machine.system, ownLog, {std::string(reading) + "RegistryKey64() exception error=0"});
}

TEST_F(RegistryOptions, WithoutTheBaseKeyNothingIsMade) {
    machine.system.registry.removeKey(R"(SOFTWARE\Demo)");
    EXPECT_EQ(read("x", 7, 9), 7U);
    EXPECT_FALSE(machine.system.registry.hasKey(key()));
    expectLog(machine.system, ownLog, {std::string(reading) + "RegistryKey64() exception error=2"});
}

TEST(CriticalName, GrowsWithEveryCallAndIsBoundAtTheFirstRecord) {
    SimulatedMachine machine;
    machine.system.startLog();
    for (int calls = 0; calls < 3; ++calls) {
        const LogScope scope;
        const LogScope nested;
    }
    machine.system.registry.deny(machine.system.loggerKey());
    {
        const LogScope scope;
    }
    std::string name;
    for (int calls = 0; calls < 7; ++calls) {
        name += "DEMOVok";
    }
    EXPECT_EQ(machine.system.files.paths(), Lines{R"(C:\)" + name + ".log"});
    {
        const LogScope scope;
    }
    EXPECT_EQ(machine.system.files.lines(R"(C:\)" + name + ".log").size(), 2U);
}

TEST(CriticalName, GrowsAlsoWithCallsThatFindNoConfiguration) {
    SimulatedMachine machine;
    {
        const LogScope scope;
    }
    machine.system.installConfig();
    machine.system.registry.removeKey(R"(SOFTWARE\Demo)");
    {
        const LogScope scope;
    }
    EXPECT_EQ(machine.system.files.paths(), Lines{R"(C:\DEMOVokDEMOVok.log)"});
}

TEST(CriticalName, LosesFourCharactersFromItsLastDot) {
    SimulatedMachine machine;
    machine.system.installConfig();
    machine.system.registry.removeKey(R"(SOFTWARE\Demo)");
    machine.system.modules.config.fileName = "P.cfg.dll";
    {
        const XFilesLogCategory scope("VOK", "a.b.text", "XFiles", "P.", 1);
    }
    EXPECT_EQ(machine.system.files.paths(), Lines{R"(C:\P.a.bt.log)"});
}

TEST(CriticalName, OnceItIsTooLongForAMutexEndsAllLogging) {
    SimulatedMachine machine;
    machine.system.startLog();
    machine.system.calls.on = false;
    for (int calls = 0; calls < 35; ++calls) {
        const LogScope scope;
        logLine("a line");
    }
    EXPECT_EQ(machine.system.files.lines(ownLog).size(), 35U);
    machine.system.registry.deny(machine.system.loggerKey());
    {
        const LogScope scope;
        logLine("lost");
    }
    machine.system.registry.allow(machine.system.loggerKey());
    {
        const LogScope scope;
        logLine("lost too");
    }
    EXPECT_EQ(machine.system.files.lines(ownLog).size(), 35U);
    EXPECT_EQ(machine.system.files.paths().size(), 1U);
}

TEST(CriticalName, AShortEnoughOneKeepsTheLogging) {
    SimulatedMachine machine;
    machine.system.startLog();
    machine.system.calls.on = false;
    for (int calls = 0; calls < 34; ++calls) {
        const LogScope scope;
    }
    machine.system.registry.deny(machine.system.loggerKey());
    {
        const LogScope scope;
    }
    machine.system.registry.allow(machine.system.loggerKey());
    const LogScope scope;
    logLine("a line");
    EXPECT_EQ(machine.system.files.lines(ownLog).size(), 1U);
}

}  // namespace
}  // namespace vok::test
