#include "support/config_library.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "simulated_machine.h"
#include "support/module.h"

namespace vok::test {
namespace {

constexpr std::uint32_t item = 10002;

// A machine with the configuration library; the holder is empty before and after.
class ConfigMachine : public SimulatedMachine {
  public:
    ConfigMachine() { system.installConfig(); }
    ~ConfigMachine() { releaseConfigLibrary(); }
    ConfigMachine(const ConfigMachine&) = delete;
    ConfigMachine& operator=(const ConfigMachine&) = delete;
};

std::uint32_t ask(std::string& out) {
    return getConfigData(*getConfigLibrary("DEMO"), 0, item, 0, out);
}

TEST(ConfigLibrary, IsMadeOnceAndKeptUntilItsRelease) {
    ConfigMachine machine;
    Module* module = getConfigLibrary("DEMO");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(getConfigLibrary("DEMO"), module);
    EXPECT_EQ(getConfigLibrary("OTHE"), module);
    expectCallsOf(machine.system, "LoadLibraryA", {R"(LoadLibraryA("DEMOcfg.dll") = module#1)"});
    releaseConfigLibrary();
    releaseConfigLibrary();
    expectCallsOf(machine.system, "FreeLibrary", {"FreeLibrary(module#1) = 1"});
    expectNoLeaks(machine.system);
    EXPECT_NE(getConfigLibrary("DEMO"), nullptr);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 2U);
}

TEST(ConfigLibrary, ReleasingBeforeThereIsOneDoesNothing) {
    SimulatedMachine machine;
    releaseConfigLibrary();
    EXPECT_TRUE(machine.system.calls.all().empty());
}

TEST(ConfigLibrary, OneThatIsMissingIsAnObjectThatAnswersSix) {
    ConfigMachine machine;
    machine.system.modules.config.inSearchPath = false;
    ASSERT_NE(getConfigLibrary("DEMO"), nullptr);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 2U);
    std::string out = "before";
    EXPECT_EQ(ask(out), 6U);
    EXPECT_EQ(out, "before");
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 2U);
    releaseConfigLibrary();
    EXPECT_EQ(machine.system.calls.count("FreeLibrary"), 0U);
}

TEST(ConfigData, IsAskedForItsSizeAndThenForItself) {
    ConfigMachine machine;
    std::string out;
    EXPECT_EQ(ask(out), 0U);
    EXPECT_EQ(out, R"(SOFTWARE\Demo)");
    expectCallsOf(machine.system, "GetConfigData",
                  {"GetConfigData(0, 10002, 0, null, 0) = 3 -> 14",
                   R"(GetConfigData(0, 10002, 0, out, 14) = 0 -> "SOFTWARE\Demo")"});
}

TEST(ConfigData, PassesItsNumbersOn) {
    ConfigMachine machine;
    std::string out;
    getConfigData(*getConfigLibrary("DEMO"), 7, 8, 9, out);
    EXPECT_EQ(machine.system.calls.linesOf("GetConfigData").front(),
              "GetConfigData(7, 8, 9, null, 0) = 3 -> 14");
}

TEST(ConfigData, WithoutTheExportAnswersSix) {
    ConfigMachine machine;
    machine.system.modules.config.hasExport = false;
    std::string out = "before";
    EXPECT_EQ(ask(out), 6U);
    EXPECT_EQ(out, "before");
}

TEST(ConfigData, AnyOtherSizingResultAnswers122) {
    for (const DWORD result : {0U, 1U, 2U, 4U, 0xFFFFFFFFU}) {
        ConfigMachine machine;
        machine.system.modules.config.sizingResult = result;
        std::string out = "before";
        EXPECT_EQ(ask(out), 122U) << result;
        EXPECT_EQ(out, "before");
        EXPECT_EQ(machine.system.calls.count("GetConfigData"), 1U);
    }
}

TEST(ConfigData, TheSecondResultIsNotLookedAt) {
    ConfigMachine machine;
    machine.system.faults.fail("GetConfigData", Failure{2}, 2);
    std::string out = "before";
    EXPECT_EQ(ask(out), 0U);
    EXPECT_EQ(out, "");
}

TEST(ConfigData, ItemsOfAnyLengthAreTakenWhole) {
    for (const std::size_t length : {0U, 1U, 270U, 271U, 272U, 273U, 1000U, 100000U}) {
        ConfigMachine machine;
        machine.system.greedyBuffers = true;
        machine.system.modules.config.item = std::string(length, 'k');
        std::string out;
        EXPECT_EQ(ask(out), 0U);
        EXPECT_EQ(out, std::string(length, 'k'));
        expectNoLeaks(machine.system, {"module#1"});
    }
}

TEST(ConfigData, AnItemWithoutItsEndIsReadToTheEndOfTheBuffer) {
    ConfigMachine machine;
    machine.system.modules.config.item = std::string(400, 'k');
    machine.system.modules.config.reportedSize = 300;
    std::string out;
    EXPECT_EQ(ask(out), 0U);
    EXPECT_EQ(out, std::string(300, 'k'));
}

TEST(ConfigData, TheBufferHoldsTheLeastSizeWhateverIsReported) {
    ConfigMachine machine;
    // A library that reports nothing and writes all the same.
    machine.system.modules.config.reportedSize = 0;
    std::string out = "before";
    EXPECT_EQ(ask(out), 0U);
    EXPECT_EQ(out, "");
    EXPECT_EQ(machine.system.calls.linesOf("GetConfigData").back(),
              R"(GetConfigData(0, 10002, 0, out, 0) = 0 -> "SOFTWARE\Demo")");
}

TEST(ConfigLibrary, ThreadsShareOneAndLoadItOnce) {
    constexpr std::size_t threads = 8;
    ConfigMachine machine;
    std::vector<Module*> got(threads);
    std::vector<std::jthread> running;
    for (std::size_t i = 0; i < threads; ++i) {
        running.emplace_back([&got, i] { got[i] = getConfigLibrary("DEMO"); });
    }
    running.clear();
    EXPECT_EQ(std::set<Module*>(got.begin(), got.end()).size(), 1U);
    EXPECT_NE(got.front(), nullptr);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 1U);
}

}  // namespace
}  // namespace vok::test
