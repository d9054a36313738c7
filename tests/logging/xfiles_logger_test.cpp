// The set-up of the logging that every exported call makes.
#include "logging/xfiles_logger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "logging/levels.h"
#include "logging/log_line.h"
#include "logging/logger_slot.h"
#include "support/expect_thrown.h"
#include "support/log_scope.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess xfilesLoggerProcess{
    "LogSetUp.", "the count of set-ups and the critical log stay as long as the process lives"};

constexpr const char* shippedLog = R"(C:\DEMOVok.log)";
constexpr const char* creation = "XFilesLogger::CreateInstance()";

class LogSetUp : public ::testing::Test {
  protected:
    LogSetUp() { machine.system.installConfig(); }

    // The log's path with that option and mode; empty without a logger.
    std::string pathWith(std::optional<DWORD> commonLog, std::int32_t mode) {
        if (commonLog) {
            machine.system.registry.setNumber(key(), "CommonLog", *commonLog);
        }
        const XFilesLogCategory scope("VOK", "Vok.log", "XFiles", "DEMO", mode);
        const auto logger = loggerSlot().use().logger;
        return logger == nullptr ? "" : logger->logPath();
    }
    std::string key() { return machine.system.loggerKey(); }
    std::optional<DWORD> option(const char* name) {
        return machine.system.registry.number(key(), name);
    }
    void expectCritical(const Lines& messages, const char* operation,
                        const char* log = shippedLog) {
        Lines lines;
        for (const std::string& message : messages) {
            std::string line = operation;
            line.resize(std::max<std::size_t>(line.size(), 25), ' ');
            lines.push_back(line + " " + message);
        }
        expectLog(machine.system, log, lines);
    }

    SimulatedMachine machine;
};

TEST_F(LogSetUp, TheLogsNameDependsOnTheCommonLogAndTheMode) {
    EXPECT_EQ(pathWith(std::nullopt, 1), shippedLog);
    EXPECT_EQ(option("CommonLog"), 0U);
    EXPECT_EQ(pathWith(1, 1), R"(C:\DEMOXFiles.log)");
    EXPECT_EQ(option("CommonLog"), 1U);
    EXPECT_EQ(pathWith(1, 0), R"(C:\XFiles.log)");
    EXPECT_EQ(pathWith(0, 0), R"(C:\Vok.log)");
    EXPECT_EQ(pathWith(5, 1), shippedLog);
    EXPECT_EQ(option("CommonLog"), 0U);
    EXPECT_EQ(pathWith(0xFFFFFFFF, 2), R"(C:\Vok.log)");
}

TEST_F(LogSetUp, AFreshKeyGetsItsOptionsInTheOrderOfTheirReading) {
    {
        const LogScope scope;
        logLine("nothing yet");
    }
    EXPECT_EQ(machine.system.registry.valueNames(key()), (Lines{"CommonLog", "startLog"}));
    EXPECT_EQ(option("startLog"), 0U);
    EXPECT_FALSE(machine.system.files.exists(shippedLog));
    machine.system.registry.setNumber(key(), "startLog", 1);
    {
        const LogScope scope;
        logLine("a line");
    }
    EXPECT_EQ(machine.system.registry.valueNames(key()),
              (Lines{"CommonLog", "startLog", "All", "VOK", "Clocktime_In_Header",
                     "Proc_Id_In_Header", "Thread_Id_In_Header"}));
    EXPECT_EQ(option("All"), 0xFFFFFFFFU);
    EXPECT_EQ(option("VOK"), 1U);
    EXPECT_EQ(option("Clocktime_In_Header"), 1U);
    EXPECT_EQ(option("Proc_Id_In_Header"), 0U);
    EXPECT_EQ(option("Thread_Id_In_Header"), 0U);
}

TEST_F(LogSetUp, IsMadeInTheseSteps) {
    {
        const LogScope scope;
    }
    const Lines expected = {
        R"(GetPrinterDriverDirectoryA(null, null, 1, out, 260, out) = 1 -> "C:\WINDOWS\system32\spool\drivers\x64")",
        R"(LoadLibraryA("DEMOcfg.dll") = module#1)",
        R"(GetProcAddress(module#1, "GetConfigData") = 0 -> found)", "FreeLibrary(module#1) = 1"};
    Lines loading;
    for (const std::string& line : machine.system.calls.lines()) {
        if (line.starts_with("GetPrinter") || line.starts_with("LoadLibrary") ||
            line.starts_with("FreeLibrary") || line.starts_with("GetProcAddress(module#1")) {
            loading.push_back(line);
        }
    }
    EXPECT_EQ(loading, expected);
    expectCallsOf(machine.system, "GetConfigData",
                  {"GetConfigData(0, 10002, 0, null, 0) = 3 -> 14",
                   R"(GetConfigData(0, 10002, 0, out, 14) = 0 -> "SOFTWARE\Demo")"});
    const Lines names = machine.system.calls.names();
    const auto at = [&](const char* name) {
        return std::find(names.begin(), names.end(), name) - names.begin();
    };
    EXPECT_LT(at("GetConfigData"), at("RegOpenKeyExA"));
    EXPECT_LT(at("RegSetValueExA"), at("CreateMutexA"));
    EXPECT_LT(at("CreateMutexA"), at("FreeLibrary"));
    expectNoLeaks(machine.system);
    EXPECT_EQ(machine.system.sids, 0);
}

TEST_F(LogSetUp, OpensTheBaseKeyBeforeTheOptionsAndMakesNothingAboveThem) {
    {
        const LogScope scope;
    }
    const auto& openings = machine.system.registry.openings;
    ASSERT_EQ(openings.size(), 2U);
    EXPECT_EQ(openings[0].path, R"(SOFTWARE\Demo)");
    EXPECT_FALSE(openings[0].created);
    EXPECT_EQ(openings[1].path, R"(SOFTWARE\Demo\XFiles\Logger)");
    EXPECT_TRUE(openings[1].created);
    expectCallsOf(machine.system, "RegSetValueExA",
                  {R"(RegSetValueExA(options#2, "CommonLog", 0, 4, 0, 4) = 0)"});
    EXPECT_EQ(machine.system.calls.count("RegQueryValueExA"), 2U);
}

TEST_F(LogSetUp, WithoutABaseKeyACriticalRecordIsWrittenAndTheLoggerMade) {
    machine.system.registry.removeKey(R"(SOFTWARE\Demo)");
    EXPECT_EQ(pathWith(std::nullopt, 1), shippedLog);
    expectCritical({"RegistryKey64() exception error=2"}, creation);
    EXPECT_FALSE(machine.system.registry.hasKey(key()));
}

TEST_F(LogSetUp, TheCriticalLogOfALogWithoutAnEndingHasItsWholeName) {
    machine.system.registry.removeKey(R"(SOFTWARE\Demo)");
    const XFilesLogCategory scope("VOK", "Plain", "XFiles", "DEMO", 1);
    expectCritical({"RegistryKey64() exception error=2"}, creation, R"(C:\DEMOPlain.log)");
}

TEST_F(LogSetUp, AnOptionsKeyThatCannotBeMadeMeansTheOwnLog) {
    machine.system.registry.setNumber(key(), "CommonLog", 1);
    machine.system.registry.deny(key());
    EXPECT_EQ(pathWith(std::nullopt, 1), shippedLog);
    expectCritical({"RegistryKey64() exception error=5"}, creation);
}

TEST_F(LogSetUp, ACommonLogThatIsTextMeansTheOwnLog) {
    machine.system.registry.setText(key(), "CommonLog", "1");
    EXPECT_EQ(pathWith(std::nullopt, 1), shippedLog);
    expectCritical({"RegistryKey64() exception error=0"}, creation);
}

TEST_F(LogSetUp, WithoutTheConfigurationThereIsNoLogger) {
    auto& config = machine.system.modules.config;
    config.inSearchPath = false;
    EXPECT_EQ(pathWith(std::nullopt, 1), "");
    config.inSearchPath = true;
    config.hasExport = false;
    EXPECT_EQ(pathWith(std::nullopt, 1), "");
    config.hasExport = true;
    config.sizingResult = 0;
    EXPECT_EQ(pathWith(std::nullopt, 1), "");
    EXPECT_EQ(machine.system.calls.count("RegOpenKeyExA"), 0U);
    EXPECT_EQ(machine.system.modules.countLoaded("DEMOcfg.dll"), 0U);
    expectNoLeaks(machine.system);
}

TEST_F(LogSetUp, ANestedOneReusesTheLoggerUntilTheOuterEnds) {
    std::optional<LogScope> outer(std::in_place);
    const BasicLogger* logger = BasicLogger::getInstance().get();
    {
        const XFilesLogCategory inner("OTHER", "Other.log", "XFiles", "DEMO", 1);
        EXPECT_EQ(BasicLogger::getInstance().get(), logger);
        EXPECT_EQ(loggerInUse().category->name(), "VOK");
        EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 1U);
    }
    EXPECT_EQ(BasicLogger::getInstance().get(), logger);
    outer.reset();
    expectThrown([] { BasicLogger::getInstance(); }, "BasicLogger::getInstance()", 1, "", 0);
    EXPECT_EQ(loggerSlot().use().category, nullptr);
    expectNoLeaks(machine.system);
}

TEST_F(LogSetUp, EachCallReadsItsOptionsAnew) {
    {
        const LogScope scope;
    }
    machine.system.registry.setNumber(key(), "startLog", 1);
    const LogScope scope;
    logLine("a line");
    EXPECT_EQ(machine.system.files.lines(shippedLog).size(), 1U);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 2U);
}

TEST_F(LogSetUp, ItsCategoryIsCriticalByDefault) {
    const LogScope scope;
    EXPECT_EQ(scope.name(), "VOK");
    EXPECT_EQ(scope.defaultMask(), 1U);
    EXPECT_EQ(loggerInUse().category->defaultMask(), 1U);
}

TEST_F(LogSetUp, OneThatFailsIsNotCounted) {
    machine.system.faults.fail("AllocateAndInitializeSid", 0, 3);
    expectThrown([] { const LogScope scope; },
                 "SecurityEveryone::setSecurityIdEveryone() AllocateAndInitializeSid failed", 8,
                 "SecurityEveryone", 86);
    expectNoLeaks(machine.system);
    {
        const LogScope scope;
    }
    expectThrown([] { BasicLogger::getInstance(); }, "BasicLogger::getInstance()", 1, "", 0);
}

TEST(ModelPrefix, IsTheBeginningOfTheFileName) {
    const struct {
        const char* path;
        const char* prefix;
    } expected[] = {{R"(C:\spool\DEMOvok.dll)", "xDEMO"},
                    {R"(C:\spool\ab)", "xab"},
                    {"nofolder.dll", "xnofo"},
                    {"a", "xa"},
                    {R"(C:\spool\)", "x"}};
    for (const auto& one : expected) {
        SimulatedMachine machine;
        machine.system.greedyBuffers = true;
        machine.system.modules.libraryPath = one.path;
        std::string out = "x";
        EXPECT_EQ(appendModuleNamePrefix(out, static_cast<HMODULE>(handleOf(Kind::module, 9))), 0);
        EXPECT_EQ(out, one.prefix);
    }
}

TEST(ModelPrefix, OfANameThatCannotBeHadIsEmptyAndOneThatIsTooLongIsCut) {
    SimulatedMachine machine;
    machine.system.faults.fail("GetModuleFileNameA");
    std::string out = "x";
    EXPECT_EQ(appendModuleNamePrefix(out, nullptr), 0);
    EXPECT_EQ(out, "x");
    machine.system.modules.hostPath = R"(C:\)" + std::string(254, 'd') + R"(\file.exe)";
    EXPECT_EQ(appendModuleNamePrefix(out, nullptr), 0);
    EXPECT_EQ(out, "xf");
}

}  // namespace
}  // namespace vok::test
