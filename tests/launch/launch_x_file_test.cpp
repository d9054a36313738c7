// Starts of a companion in the spooler's own context.
#include <gtest/gtest.h>

#include <string>

#include "launch/program_launch.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

TEST(LaunchXFile, WithoutARecordStartsAndStoresNothing) {
    const SimulatedMachine machine(os::win98);
    EXPECT_EQ(LaunchXFile(nullptr, R"(C:\DEMOnemb.exe)", " SPLPP", companionNemb), 0U);
    EXPECT_EQ(machine.system.calls.lines(),
              Lines{R"(CreateProcessA("C:\DEMOnemb.exe", " SPLPP", null, null, 0, 0x0, null, null,)"
                    " startup{104, desktop=null, flags=0}, out) = 1 -> process#1, thread#1"});
    expectNoLeaks(machine.system, {"process#1", "thread#1"});
}

TEST(LaunchXFile, StoresTheHandlesOfItsCompanionAndDoesNotLogThem) {
    for (const Companion companion : {companionNemb, companionDral}) {
        const LoggedMachine machine(os::win98);
        VKDATA record{};
        EXPECT_EQ(LaunchXFile(&record, "app", " line", companion), 0U);
        const HANDLE process = handleOf(Kind::process, 1);
        const HANDLE thread = handleOf(Kind::thread, 1);
        const bool isDral = companion == companionDral;
        EXPECT_EQ(record.hDRALProc, isDral ? process : nullptr);
        EXPECT_EQ(record.hDRALThread, isDral ? thread : nullptr);
        EXPECT_EQ(record.hNEMBProc, isDral ? nullptr : process);
        EXPECT_EQ(record.hNEMBThread, isDral ? nullptr : thread);
        expectMessages(machine.system,
                       {"+LaunchXFile", "-LaunchXFile", "The App Name = appThe Cmd Line =  line"});
    }
}

TEST(LaunchXFile, AFailureIsLoggedAndLeavesTheRecordAlone) {
    for (const DWORD code : {DWORD{ERROR_FILE_NOT_FOUND}, DWORD{ERROR_ACCESS_DENIED}}) {
        LoggedMachine machine(os::win98);
        machine.system.processes.refuse("app", code);
        VKDATA record{};
        record.hNEMBProc = handleOf(Kind::process, 8);
        EXPECT_EQ(LaunchXFile(&record, "app", " line", companionNemb), code);
        EXPECT_EQ(record.hNEMBProc, handleOf(Kind::process, 8));
        expectMessages(machine.system,
                       {"+LaunchXFile", "-LaunchXFile", "The App Name = appThe Cmd Line =  line",
                        "CreateProcess Failed! The error = " + std::to_string(code)});
    }
}

TEST(LaunchXFile, TextsThatAreNullStayNull) {
    const LoggedMachine machine(os::winMe);
    EXPECT_EQ(LaunchXFile(nullptr, nullptr, nullptr, companionDral), 0U);
    EXPECT_TRUE(machine.system.calls.linesOf("CreateProcessA")
                    .at(0)
                    .starts_with("CreateProcessA(null, null, null,"));
    expectMessages(machine.system,
                   {"+LaunchXFile", "-LaunchXFile", "The App Name = The Cmd Line = "});
}

TEST(WinExec, AnswersAbove31AreStarts) {
    const struct {
        LONG_PTR answer;
        bool isStart;
    } cases[] = {{0, false}, {2, false}, {31, false}, {32, true}, {33, true}};
    for (const auto& one : cases) {
        SimulatedMachine machine;
        machine.system.faults.fail("WinExec", Failure{one.answer});
        EXPECT_EQ(winExec("line", SW_SHOW), one.isStart) << one.answer;
        expectCallsOf(machine.system, "WinExec",
                      {"WinExec(\"line\", 5) = " + std::to_string(one.answer)});
    }
}

}  // namespace
}  // namespace vok::test
