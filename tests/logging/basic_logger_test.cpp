#include "logging/basic_logger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "option_logger.h"
#include "support/expect_thrown.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess basicLoggerProcess{"LoggingFailed.",
                                    "a failure of all logging stays as long as the process lives"};

TEST(LogCategory, HasANameAndAMask) {
    LogCategory category("VOK", LEVEL_CRITICAL);
    EXPECT_EQ(category.name(), "VOK");
    EXPECT_EQ(category.defaultMask(), 1U);
    category.setDefaultMask(LEVEL_DETAIL);
    EXPECT_EQ(category.defaultMask(), 8U);
    EXPECT_EQ(allCategory().name(), "All");
    EXPECT_EQ(allCategory().defaultMask(), 0xFFFFFFFFU);
}

TEST(LogFile, ABareNameLiesInTheRootOfTheWindowsDirectorysDrive) {
    const struct {
        const char* windows;
        const char* logName;
        const char* path;
        const char* mutex;
    } expected[] = {
        {R"(C:\WINDOWS)", "Vok.log", R"(C:\Vok.log)", "ZELOG_Vok.log"},
        {R"(E:\WINNT)", "a name.log", R"(E:\a name.log)", "ZELOG_a name.log"},
        {R"(D:\)", "", R"(D:\)", "ZELOG_"},
        {R"(C:\WINDOWS)", R"(D:\logs\x.log)", R"(D:\logs\x.log)", "ZELOG_x.log"},
        {R"(C:\WINDOWS)", R"(sub\x.log)", R"(sub\x.log)", "ZELOG_x.log"},
        {R"(C:\WINDOWS)", R"(D:\logs\)", R"(D:\logs\)", "ZELOG_"},
    };
    for (const auto& one : expected) {
        SimulatedMachine machine;
        machine.system.modules.windowsDirectory = one.windows;
        const BasicLogger logger(one.logName, 10);
        EXPECT_EQ(logger.logPath(), one.path);
        EXPECT_NE(machine.system.mutexes.find(one.mutex), nullptr) << one.mutex;
        EXPECT_STREQ(BasicLogger::mutexNameFor(one.logName).c_str(), one.mutex);
    }
}

TEST(LogFile, WithoutAWindowsDirectoryTheDriveIsC) {
    for (const std::size_t way : {0U, 1U}) {
        SimulatedMachine machine;
        machine.system.modules.windowsDirectory = R"(E:\WINDOWS)";
        machine.system.faults.fail("GetWindowsDirectoryA", way);
        EXPECT_EQ(BasicLogger("Vok.log", 10).logPath(), R"(c:\Vok.log)");
    }
    SimulatedMachine machine;
    machine.system.modules.windowsDirectory = R"(E:\)" + std::string(257, 'w');
    EXPECT_EQ(BasicLogger("Vok.log", 10).logPath(), R"(E:\Vok.log)");
    machine.system.modules.windowsDirectory += "w";
    EXPECT_EQ(BasicLogger("Vok.log", 10).logPath(), R"(c:\Vok.log)");
}

TEST(LogFile, TheLongestNameIsTheMutexs) {
    SimulatedMachine machine;
    const std::string longest(253, 'n');
    EXPECT_EQ(BasicLogger(longest.c_str(), 10).logPath(), R"(C:\)" + longest);
}

TEST(Logger, IsBuiltAndDestroyedInOrder) {
    SimulatedMachine machine;
    {
        const BasicLogger logger("Vok.log", 10);
    }
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"InitializeSecurityDescriptor(out, 1) = 1",
                     "AllocateAndInitializeSid(1, 1, 0, out) = 1", "IsValidSid(out) = 1",
                     "GetLengthSid(out) = 12", "InitializeAcl(out, 28, 2) = 1",
                     "AddAccessAllowedAce(out, 2, 0x10000000, out) = 1",
                     "SetSecurityDescriptorDacl(out, 1, list, 0) = 1",
                     "InitializeSecurityDescriptor(out, 1) = 1",
                     "SetSecurityDescriptorDacl(out, 1, null, 0) = 1",
                     R"(CreateMutexA(sa{24, inherit=0, dacl=null}, 0, "ZELOG_Vok.log") = mutex#1)",
                     R"(GetWindowsDirectoryA(out, 261) = 10 -> "C:\WINDOWS")",
                     "CloseHandle(mutex#1) = 1", "FreeSid(out) = null"}));
    expectNoLeaks(machine.system);
    EXPECT_EQ(machine.system.sids, 0);
}

TEST(Logger, WithoutADescriptorForItsFileIsNotMade) {
    SimulatedMachine machine;
    machine.system.faults.fail("AllocateAndInitializeSid");
    expectThrown([] { const BasicLogger logger("Vok.log", 10); },
                 "SecurityEveryone::setSecurityIdEveryone() AllocateAndInitializeSid failed", 8,
                 "SecurityEveryone", 86);
    expectNoLeaks(machine.system);
}

TEST(Logger, NoneInstalledThrows) {
    expectThrown([] { BasicLogger::getInstance(); }, "BasicLogger::getInstance()", 1, "", 0);
}

// What goes wrong with one logger's mutex ends all logging of the process.
void expectAllLoggingFailed(SimulatedMachine& machine, const char* logName) {
    OptionLogger before;
    before.options["startLog"] = 1;
    const LogCategory category("C", LEVEL_ALL);
    EXPECT_TRUE(before.isEnabled(&category, LEVEL_CRITICAL));
    OptionLogger failed(logName);
    EXPECT_EQ(failed.logPath(), "");
    OptionLogger after;
    after.options["startLog"] = 1;
    for (OptionLogger* logger : {&before, &failed, &after}) {
        EXPECT_FALSE(logger->isEnabled(&category, LEVEL_CRITICAL));
        EXPECT_FALSE(logger->isEnabled(&category, LEVEL_ALL));
    }
    machine.system.calls.clear();
    failed.write(&category, LEVEL_CRITICAL, "lost");
    failed.write(&category, LEVEL_CRITICAL, std::string("lost"));
    failed.deleteLogFile();
    EXPECT_TRUE(machine.system.calls.all().empty());
    EXPECT_TRUE(failed.reads.empty());
}

TEST(LoggingFailed, ByAMutexThatCannotBeMade) {
    SimulatedMachine machine;
    machine.system.mutexes.deny("ZELOG_Denied.log");
    expectAllLoggingFailed(machine, "Denied.log");
}

TEST(LoggingFailed, ByAMutexNameThatIsTooLong) {
    SimulatedMachine machine;
    expectAllLoggingFailed(machine, std::string(254, 'n').c_str());
}

TEST(LoggingFailed, ByAnOverlongNameWithoutOverrunningThePath) {
    SimulatedMachine machine;
    expectAllLoggingFailed(machine, std::string(1000, 'n').c_str());
}

TEST(LoggingFailed, ByADescriptorForTheMutex) {
    SimulatedMachine machine;
    OptionLogger sane;
    machine.system.faults.fail("InitializeSecurityDescriptor", 0, 2);
    const BasicLogger failed("Vok.log", 10);
    const LogCategory category("C", LEVEL_ALL);
    EXPECT_FALSE(sane.isEnabled(&category, LEVEL_CRITICAL));
}

TEST(Depth, IsCountedForEachThread) {
    SimulatedMachine machine;
    OptionLogger logger;
    const DWORD self = ::GetCurrentThreadId();
    logger.increaseDepth();
    logger.increaseDepth();
    std::thread([&] {
        logger.decreaseDepth();
        EXPECT_EQ(logger.getDepth(::GetCurrentThreadId()), -1);
        EXPECT_EQ(logger.getDepth(self), 2);
    }).join();
    logger.decreaseDepth();
    EXPECT_EQ(logger.getDepth(self), 1);
    EXPECT_EQ(logger.getDepth(0xFFFFFFFF), 0);
}

TEST(LogFile, IsDeletedUnderItsMutex) {
    SimulatedMachine machine;
    OptionLogger logger("Vok.log");
    machine.system.files.put(R"(C:\Vok.log)", "line\r\n");
    machine.system.calls.clear();
    logger.deleteLogFile();
    logger.deleteLogFile();
    EXPECT_EQ(
        machine.system.calls.lines(),
        (Lines{"WaitForSingleObject(mutex#1, 0xffffffff) = 0", R"(DeleteFileA("C:\Vok.log") = 1)",
               "ReleaseMutex(mutex#1) = 1", "WaitForSingleObject(mutex#1, 0xffffffff) = 0",
               R"(DeleteFileA("C:\Vok.log") = 0 (error 2))", "ReleaseMutex(mutex#1) = 1"}));
}

TEST(BasicOptions, LoggingIsOnWhileTheFileExists) {
    char folder[MAX_PATH] = {};
    ASSERT_NE(::GetTempPathA(MAX_PATH, folder), 0U);
    const std::string path = folder + ("vok" + std::to_string(::GetCurrentProcessId()) + ".log");
    BasicLogger logger(path.c_str(), 10);
    std::uint32_t value = 7;
    logger.getOption("startLog", &value, 9);
    EXPECT_EQ(value, 0U);
    std::FILE* file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    logger.getOption("startLog", &value, 9);
    EXPECT_EQ(value, 0xFFFFFFFFU);
    for (const char* other : {"StartLog", "startLog ", "All", ""}) {
        value = 7;
        logger.getOption(other, &value, 9);
        EXPECT_EQ(value, 9U) << other;
    }
    logger.deleteLogFile();
    logger.getOption("startLog", &value, 9);
    EXPECT_EQ(value, 0U);
}

}  // namespace
}  // namespace vok::test
