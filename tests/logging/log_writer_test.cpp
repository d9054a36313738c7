// The lines of the log file, and how they get there.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "option_logger.h"
#include "support/expect_thrown.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

constexpr const char* path = R"(C:\Test.log)";

class LogWriter : public ::testing::Test {
  protected:
    LogWriter() { machine.system.calls.clear(); }

    void write(const char* text) { logger.write(&category, LEVEL_DETAIL, text); }
    std::string written() { return machine.system.files.text(path); }
    void onlyMessage() {
        logger.options = {
            {"Clocktime_In_Header", 0}, {"Proc_Id_In_Header", 0}, {"Thread_Id_In_Header", 0}};
    }

    SimulatedMachine machine;
    OptionLogger logger;
    LogCategory category{"VOK", LEVEL_CRITICAL};
};

TEST_F(LogWriter, WritesARecordInTheseSteps) {
    const std::string open = R"(CreateFileA("C:\Test.log", 0xc0000000, 3, )"
                             R"(sa{24, inherit=1, dacl=[1: allow 0x10000000 flags=0 everyone]}, )";
    machine.system.files.put(path, "before\r\n");
    write("message");
    EXPECT_EQ(
        machine.system.calls.lines(),
        (Lines{
            "WaitForSingleObject(mutex#1, 0xffffffff) = 0", "GetLocalTime(out) = 0",
            open + "3, 0x80, null) = file#1", "CloseHandle(file#1) = 1",
            open + "4, 0x80, null) = file#2", "GetFileSize(file#2, out) = 8",
            "SetFilePointer(file#2, 8, null, 0) = 8",
            R"(WriteFile(file#2, "2024/03/07-09:05:01.042 VOK        message", 44, out, null) = 1)",
            "CloseHandle(file#2) = 1", "ReleaseMutex(mutex#1) = 1"}));
    EXPECT_EQ(written(), "before\r\n2024/03/07-09:05:01.042 VOK        message\r\n");
    expectNoLeaks(machine.system, {"mutex#1"});
}

TEST_F(LogWriter, ReadsTheHeaderOptionsInOrderBeforeTheLock) {
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([&] { write("lost"); }, "Mutex::acquire() WaitForSingleObject failed", 6, "Mutex",
                 123);
    EXPECT_EQ(logger.reads,
              (Lines{"Clocktime_In_Header", "Proc_Id_In_Header", "Thread_Id_In_Header"}));
    EXPECT_FALSE(machine.system.files.exists(path));
    EXPECT_EQ(machine.system.calls.names(), Lines{"WaitForSingleObject"});
}

TEST_F(LogWriter, PadsEveryFieldOfTheClock) {
    SYSTEMTIME time = {};
    time.wYear = 2026;
    time.wMonth = 1;
    time.wDay = 5;
    time.wHour = 7;
    time.wMinute = 3;
    time.wSecond = 9;
    time.wMilliseconds = 4;
    machine.system.clock.setLocal(time);
    write("m");
    EXPECT_EQ(written(), "2026/01/05-07:03:09.004 VOK        m\r\n");
}

TEST_F(LogWriter, AsksNothingThatItDoesNotWrite) {
    onlyMessage();
    write("m");
    EXPECT_EQ(written(), "VOK        m\r\n");
    EXPECT_EQ(machine.system.calls.count("GetLocalTime"), 0U);
    EXPECT_EQ(machine.system.calls.count("GetCurrentProcessId"), 0U);
}

TEST_F(LogWriter, PadsTheIdsToFourDigitsAtLeast) {
    onlyMessage();
    logger.options["Proc_Id_In_Header"] = 1;
    logger.options["Thread_Id_In_Header"] = 0x80000000;
    const struct {
        DWORD process;
        DWORD thread;
        const char* header;
    } expected[] = {{0xA3C, 0xF10, "pid=0a3c tid=0f10 "},
                    {0x1F, 0x1, "pid=001f tid=0001 "},
                    {0x12345, 0xFEDCBA98, "pid=12345 tid=fedcba98 "}};
    for (const auto& one : expected) {
        machine.system.files.remove(path);
        machine.system.processes.ownId = one.process;
        System::setThreadId(one.thread);
        write("m");
        System::setThreadId(0);
        EXPECT_EQ(written(), std::string(one.header) + "VOK        m\r\n");
    }
}

TEST_F(LogWriter, OptionsThatCannotBeReadGiveTheClockAlone) {
    logger.unreadable = {"Clocktime_In_Header", "Proc_Id_In_Header", "Thread_Id_In_Header"};
    write("m");
    EXPECT_EQ(written(), machine.system.clock.logField() + "VOK        m\r\n");
}

TEST_F(LogWriter, PadsTheCategoryAndNeverCutsIt) {
    onlyMessage();
    for (const char* name : {"", "NineChars", "TenLetters", "ElevenChars"}) {
        machine.system.files.remove(path);
        const LogCategory other(name, 0);
        logger.write(&other, 0, "m");
        std::string padded = name;
        padded.resize(std::max<std::size_t>(padded.size(), 10), ' ');
        EXPECT_EQ(written(), padded + " m\r\n");
    }
}

TEST_F(LogWriter, IndentsByTheDepthOfItsThread) {
    onlyMessage();
    logger.increaseDepth();
    logger.increaseDepth();
    logger.increaseDepth();
    write("m");
    EXPECT_EQ(written(), "VOK           m\r\n");
    machine.system.files.remove(path);
    for (int i = 0; i < 5; ++i) {
        logger.decreaseDepth();
    }
    write("below zero");
    EXPECT_EQ(written(), "VOK        below zero\r\n");
}

TEST_F(LogWriter, KeepsTheMessageAsItIs) {
    onlyMessage();
    write("");
    write("100%s \t\"\n");
    logger.write(&category, 0, std::string(100000, 'x'));
    EXPECT_EQ(written(), "VOK        \r\nVOK        100%s \t\"\n\r\nVOK        " +
                             std::string(100000, 'x') + "\r\n");
}

TEST_F(LogWriter, PutsPrefixAndSuffixAroundTheLine) {
    logger.prefix = "<";
    logger.suffix = ">";
    write("m");
    EXPECT_EQ(written(), "<" + machine.system.clock.logField() + "VOK        m>\r\n");
}

TEST_F(LogWriter, TellsOfAMissingFileOnceAndMakesItForEveryone) {
    write("first");
    EXPECT_EQ(logger.missing, 1);
    expectCallsOf(machine.system, "CloseHandle",
                  {"CloseHandle(invalid) = 1", "CloseHandle(file#1) = 1"});
    EXPECT_EQ(machine.system.files.file(path)->security,
              "sa{24, inherit=1, dacl=[1: allow 0x10000000 flags=0 everyone]}");
    write("second");
    EXPECT_EQ(logger.missing, 1);
    EXPECT_EQ(machine.system.files.lines(path).size(), 2U);
    machine.system.files.remove(path);
    write("third");
    EXPECT_EQ(logger.missing, 2);
}

TEST_F(LogWriter, LosesTheRecordOfALockedFileAndNothingElse) {
    machine.system.files.put(path, "before");
    machine.system.files.lock(path);
    write("lost");
    EXPECT_EQ(written(), "before");
    EXPECT_EQ(machine.system.calls.count("WriteFile"), 0U);
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
    machine.system.files.unlock(path);
    write("kept");
    EXPECT_EQ(machine.system.files.lines(path).size(), 1U);
    expectNoLeaks(machine.system, {"mutex#1"});
}

TEST_F(LogWriter, LosesTheRecordOfAFullDiskAndNothingElse) {
    machine.system.files.diskFull = true;
    write("lost");
    EXPECT_EQ(written(), "");
    machine.system.files.diskFull = false;
    write("kept");
    EXPECT_EQ(machine.system.files.lines(path).size(), 1U);
    expectNoLeaks(machine.system, {"mutex#1"});
}

TEST_F(LogWriter, OverTwoGibibytesWritesAtTheBeginning) {
    onlyMessage();
    machine.system.files.put(path, "earlier records\r\n");
    machine.system.files.pretendSize(path, 0x80000000ULL);
    write("m");
    expectCallsOf(machine.system, "SetFilePointer",
                  {"SetFilePointer(file#2, -2147483648, null, 0) = 4294967295 (error 131)"});
    EXPECT_EQ(written().substr(0, 14), "VOK        m\r\n");
}

TEST_F(LogWriter, AFailingReleaseOfTheMutexComesOutAfterTheRecord) {
    machine.system.faults.fail("ReleaseMutex");
    expectThrown([&] { write("written"); }, "Mutex::release() ReleaseMutex failed", 288, "Mutex",
                 90);
    EXPECT_EQ(machine.system.files.lines(path).size(), 1U);
}

TEST(RealLogFile, GrowsByWholeLinesAndSurvivesALock) {
    char folder[MAX_PATH] = {};
    ASSERT_NE(::GetTempPathA(MAX_PATH, folder), 0U);
    const std::string file = folder + ("vokw" + std::to_string(::GetCurrentProcessId()) + ".log");
    OptionLogger logger(file.c_str());
    logger.options["Clocktime_In_Header"] = 0;
    const LogCategory category("VOK", 0);
    const auto size = [&] {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        return ::GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &data)
                   ? data.nFileSizeLow
                   : 0;
    };
    logger.write(&category, 0, "one");
    EXPECT_EQ(size(), 16U);
    HANDLE lock = ::CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                OPEN_EXISTING, 0, nullptr);
    logger.write(&category, 0, "lost");
    ::CloseHandle(lock);
    EXPECT_EQ(size(), 16U);
    logger.write(&category, 0, "two");
    EXPECT_EQ(size(), 32U);
    logger.deleteLogFile();
    EXPECT_EQ(size(), 0U);
}

}  // namespace
}  // namespace vok::test
