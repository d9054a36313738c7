// What the critical log binds at its first record it keeps for the life of the process: each of
// these tests needs one of its own.
#include "logging/critical_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "option_logger.h"
#include "support/expect_thrown.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess criticalLogProcess{
    "CriticalLog", "the critical log keeps its file and category as long as the process lives"};

std::string padded(const std::string& category) {
    std::string text = category;
    text.resize(std::max<std::size_t>(text.size(), 25), ' ');
    return text + " ";
}

TEST(CriticalLog, WritesToTheFileOfItsNameWithTheClockAlone) {
    SimulatedMachine machine;
    CriticalLog("Vok", "XFilesLogger::getOption()", "message", nullptr);
    EXPECT_EQ(machine.system.files.text(R"(C:\Vok.log)"),
              machine.system.clock.logField() + "XFilesLogger::getOption() message\r\n");
    EXPECT_NE(machine.system.mutexes.find("ZELOG_Vok.log"), nullptr);
    EXPECT_EQ(machine.system.calls.count("GetModuleFileNameA"), 0U);
}

TEST(CriticalLog, PadsItsCategoryTo25) {
    SimulatedMachine machine;
    CriticalLog("Vok", "Short", "message", nullptr);
    expectLog(machine.system, R"(C:\Vok.log)", {"Short" + std::string(20, ' ') + " message"});
}

TEST(CriticalLog, KeepsFileAndCategoryOfTheFirstRecord) {
    SimulatedMachine machine;
    CriticalLog("First", "one", "1", nullptr);
    CriticalLog("Second", "two", "2", nullptr);
    CriticalLog("", "three", "3", nullptr);
    expectLog(machine.system, R"(C:\First.log)",
              {padded("one") + "1", padded("one") + "2", padded("one") + "3"});
    EXPECT_EQ(machine.system.files.paths().size(), 1U);
    expectNoLeaks(machine.system, {"mutex#1"});
}

TEST(CriticalLog, AsksNoRegistryForItsOptions) {
    SimulatedMachine machine;
    machine.system.startLog();
    machine.system.registry.setNumber(machine.system.loggerKey(), "startLog", 0);
    machine.system.registry.setNumber(machine.system.loggerKey(), "Clocktime_In_Header", 0);
    CriticalLog("Vok", "c", "message", nullptr);
    EXPECT_EQ(machine.system.calls.count("RegOpenKeyExA"), 0U);
    EXPECT_EQ(machine.system.files.text(R"(C:\Vok.log)"),
              machine.system.clock.logField() + padded("c") + "message\r\n");
}

// The file of a critical record without a name, in a host program of that path.
void expectFileOf(const char* host, const char* file) {
    SimulatedMachine machine;
    machine.system.greedyBuffers = true;
    machine.system.modules.hostPath = host;
    CriticalLog("", "c", "message", nullptr);
    expectCallsOf(machine.system, "GetModuleFileNameA",
                  {R"(GetModuleFileNameA(host, out, 260) = )" +
                   std::to_string(std::string(host).size()) + " -> \"" + host + "\""});
    EXPECT_TRUE(machine.system.files.exists(file));
    EXPECT_EQ(machine.system.files.paths().size(), 1U);
}

TEST(CriticalLogWithoutAName, IsNamedAfterTheHostProgram) {
    expectFileOf(R"(C:\WINDOWS\System32\SPOOLSV.EXE)", R"(C:\spoo.log)");
}

TEST(CriticalLogWithoutAName, TakesLessFromAShorterName) {
    expectFileOf(R"(C:\WINDOWS\abc)", R"(C:\abc.log)");
}

TEST(CriticalLogWithoutAName, TakesANameOfOneCharacter) {
    expectFileOf(R"(C:\A\B)", R"(C:\b.log)");
}

TEST(CriticalLogWithoutAName, TakesANameOfOneCharacterInTheRoot) {
    expectFileOf(R"(\B)", R"(C:\b.log)");
}

TEST(CriticalLogWithoutAName, TakesTheBeginningOfAPathWithoutAFolder) {
    expectFileOf("ABCDEFGH.DLL", R"(C:\abcd.log)");
}

TEST(CriticalLogWithoutAName, LooksForABackslashBeforeTheLastCharacter) {
    expectFileOf(R"(C:\A\BCD\)", R"(bcd\.log)");
}

TEST(CriticalLogWithoutAName, OfALibraryIsNamedAfterTheLibrary) {
    SimulatedMachine machine;
    CriticalLog("", "c", "message", static_cast<HMODULE>(handleOf(Kind::module, 9)));
    EXPECT_EQ(machine.system.files.paths(), Lines{R"(C:\demo.log)"});
}

TEST(CriticalLogWithoutAName, WritesNothingWhenThereIsNone) {
    SimulatedMachine machine;
    machine.system.faults.fail("GetModuleFileNameA");
    expectThrown([] { CriticalLog("", "c", "message", nullptr); },
                 "CriticalLog(): GetModuleFileName failed", 0, "CriticalLog", 41);
    EXPECT_TRUE(machine.system.files.paths().empty());
    CriticalLog("Vok", "c", "the next", nullptr);
    expectLog(machine.system, R"(C:\Vok.log)", {padded("c") + "the next"});
}

TEST(CriticalLog, ALoggerThatCannotBeMadeIsTriedAgain) {
    SimulatedMachine machine;
    machine.system.faults.fail("AllocateAndInitializeSid");
    expectThrown([] { CriticalLog("First", "one", "1", nullptr); },
                 "SecurityEveryone::setSecurityIdEveryone() AllocateAndInitializeSid failed", 8,
                 "SecurityEveryone", 86);
    CriticalLog("Second", "two", "2", nullptr);
    expectLog(machine.system, R"(C:\Second.log)", {padded("one") + "2"});
}

TEST(CriticalLog, WithoutItsMutexSilencesTheOrdinaryLogToo) {
    SimulatedMachine machine;
    OptionLogger ordinary;
    ordinary.options["startLog"] = 1;
    const LogCategory category("C", LEVEL_ALL);
    ASSERT_TRUE(ordinary.isEnabled(&category, LEVEL_DETAIL));
    CriticalLog(std::string(260, 'n'), "c", "lost", nullptr);
    EXPECT_TRUE(machine.system.files.paths().empty());
    EXPECT_FALSE(ordinary.isEnabled(&category, LEVEL_DETAIL));
    EXPECT_FALSE(ordinary.isEnabled(&category, LEVEL_CRITICAL));
}

TEST(CriticalLog, ARecordWhoseMutexCannotBeHadIsThrown) {
    SimulatedMachine machine;
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([] { CriticalLog("Vok", "c", "lost", nullptr); },
                 "Mutex::acquire() WaitForSingleObject failed", 6, "Mutex", 123);
}

TEST(CriticalLog, LosesARecordOfALockedFileOrAFullDisk) {
    SimulatedMachine machine;
    machine.system.files.put(R"(C:\Vok.log)");
    machine.system.files.lock(R"(C:\Vok.log)");
    EXPECT_NO_THROW(CriticalLog("Vok", "c", "lost", nullptr));
    machine.system.files.unlock(R"(C:\Vok.log)");
    machine.system.files.diskFull = true;
    EXPECT_NO_THROW(CriticalLog("Vok", "c", "lost", nullptr));
    EXPECT_EQ(machine.system.files.text(R"(C:\Vok.log)"), "");
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
}

}  // namespace
}  // namespace vok::test
