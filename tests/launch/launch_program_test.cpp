// Starts of a companion in the interactive user's context.
#include <gtest/gtest.h>

#include <string>

#include "launch/program_launch.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

constexpr const char* networkPort = R"(\\server\queue)";

// What both kinds of token are used for.
std::string createsProcess(const std::string& token, const std::string& environment) {
    return "CreateProcessAsUserA(" + token + R"(, null, "line", null, null, 0, 0x0, )" +
           environment + R"(, null, startup{104, desktop="Winsta0\Default", flags=0}, out))" +
           " = 1 -> process#1, thread#1";
}

TEST(LaunchProgram, OfEachFamilyAndPort) {
    for (const OsRelease& os : os::allNt) {
        for (const char* port : {"LPT1:", networkPort}) {
            SCOPED_TRACE(std::string(os.name) + " " + port);
            SimulatedMachine machine(os);
            VKDATA record{};
            const HANDLE result = LaunchProgram("line", port, &record, companionNemb);
            const bool isUsers = os.isNtFrom(5, 1);
            const bool byWinExec = !isUsers && port != networkPort;
            EXPECT_EQ(result, byWinExec ? reinterpret_cast<HANDLE>(1) : handleOf(Kind::process, 1));
            EXPECT_EQ(record.hNEMBProc, byWinExec ? nullptr : handleOf(Kind::process, 1));
            EXPECT_EQ(record.hNEMBThread, byWinExec ? nullptr : handleOf(Kind::thread, 1));
            EXPECT_EQ(record.hDRALProc, nullptr);
            EXPECT_EQ(machine.system.calls.count("WTSQueryUserToken"), isUsers ? 1U : 0U);
            EXPECT_EQ(machine.system.calls.count("ImpersonateSelf"),
                      isUsers || byWinExec ? 0U : 1U);
            expectCallsOf(machine.system, "WinExec",
                          byWinExec ? Lines{R"(WinExec("line", 1) = 33)"} : Lines());
            expectCallsOf(machine.system, "CreateProcessAsUserA",
                          byWinExec ? Lines()
                          : isUsers ? Lines{createsProcess("token#1", "environment#1")}
                                    : Lines{createsProcess("token#2", "null")});
            expectNoLeaks(machine.system, byWinExec ? Lines() : Lines{"process#1", "thread#1"});
        }
    }
}

TEST(LaunchProgram, AMissingPrivilegeMeansTheSpoolersTokenForAnyPort) {
    for (const char* port : {"LPT1:", networkPort}) {
        LoggedMachine machine(os::win7);
        machine.system.sessions.userTokenError = ERROR_PRIVILEGE_NOT_HELD;
        VKDATA record{};
        EXPECT_EQ(LaunchProgram("line", port, &record, companionDral), handleOf(Kind::process, 1));
        EXPECT_EQ(machine.system.processes.starts.at(0).token, "token#2");
        expectMessages(machine.system,
                       {"+LaunchProgram", "-LaunchProgram", "The command line is line",
                        "WTSQueryUserToken rc=0 lastError=1314 token handle=0", "Calling CPAU",
                        "VokData->hDRALProc = " + logText(handleOf(Kind::process, 1)),
                        "VokData->hDRALThread  = " + logText(handleOf(Kind::thread, 1))});
    }
}

TEST(LaunchProgram, AnyOtherErrorMeansWinExecForALocalPort) {
    for (const DWORD code : {DWORD{ERROR_NO_TOKEN}, DWORD{ERROR_ACCESS_DENIED}, DWORD{1313}}) {
        LoggedMachine machine(os::winXp);
        machine.system.sessions.userTokenError = code;
        VKDATA record{};
        EXPECT_EQ(LaunchProgram("line", "LPT1:", &record, companionDral),
                  reinterpret_cast<HANDLE>(1));
        EXPECT_EQ(record.hDRALProc, nullptr);
        expectMessages(
            machine.system,
            {"+LaunchProgram", "-LaunchProgram", "The command line is line",
             "WTSQueryUserToken rc=0 lastError=" + std::to_string(code) + " token handle=0",
             "Launching via WinExec"});
    }
}

// It is the port's local form that counts: \\HOST\queue is this machine's own.
TEST(LaunchProgram, APortOfThisComputerIsLocal) {
    const SimulatedMachine machine(os::win2000);
    VKDATA record{};
    LaunchProgram("line", R"(\\HOST\queue)", &record, companionNemb);
    EXPECT_EQ(machine.system.calls.count("WinExec"), 1U);
}

TEST(LaunchProgram, WinExecThatFailsIsNoStart) {
    LoggedMachine machine(os::nt40);
    machine.system.faults.fail("WinExec", 2);
    VKDATA record{};
    record.hNEMBProc = handleOf(Kind::process, 8);
    EXPECT_EQ(LaunchProgram("line", "LPT1:", &record, companionNemb), nullptr);
    EXPECT_EQ(record.hNEMBProc, handleOf(Kind::process, 8));
    expectMessages(machine.system, {"+LaunchProgram", "-LaunchProgram", "The command line is line",
                                    "Launching via WinExec"});
    // Nothing was opened, and the user's token is closed all the same.
    EXPECT_EQ(machine.system.calls.linesOf("CloseHandle").back(),
              "CloseHandle(null) = 0 (error 6)");
}

TEST(LaunchProgram, ACreationThatFailsStoresAndLogsNoHandles) {
    for (const Companion companion : {companionNemb, companionDral}) {
        LoggedMachine machine(os::winXp);
        machine.system.processes.refuse("line", ERROR_BAD_EXE_FORMAT);
        VKDATA record{};
        record.hNEMBProc = record.hDRALThread = handleOf(Kind::process, 8);
        EXPECT_EQ(LaunchProgram("line", "LPT1:", &record, companion), nullptr);
        const std::string name = companion == companionNemb ? "VokData->hNEMB" : "VokData->hDRAL";
        EXPECT_EQ(companion == companionNemb ? record.hNEMBProc : record.hDRALThread, nullptr);
        Lines lines = withoutClock(machine.system.files.lines(machine.system.logPath()));
        ASSERT_EQ(lines.size(), 8U);
        const std::string category = "VOK        ";
        EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
                  (Lines{category + "Calling CPAU", category + "CPAU Failed lasterror=193",
                         category + name + "Proc = ", category + name + "Thread  = "}));
        EXPECT_EQ(machine.system.handles.countOpen(Kind::token), 0U);
        EXPECT_EQ(machine.system.handles.countOpen(Kind::environment), 0U);
    }
}

TEST(LaunchProgram, WithoutALineNothingIsSaidOfIt) {
    const LoggedMachine machine(os::win2000);
    VKDATA record{};
    EXPECT_EQ(LaunchProgram(nullptr, networkPort, &record, companionNemb),
              handleOf(Kind::process, 1));
    EXPECT_TRUE(machine.system.calls.linesOf("CreateProcessAsUserA")
                    .at(0)
                    .starts_with("CreateProcessAsUserA(token#2, null, null,"));
    expectMessages(machine.system, {"+LaunchProgram", "-LaunchProgram", "Calling CPAU",
                                    "VokData->hNEMBProc = " + logText(record.hNEMBProc),
                                    "VokData->hNEMBThread  = " + logText(record.hNEMBThread)});
}

TEST(LaunchProgram, AnEnvironmentThatCannotBeMadeEndsItAndClosesNothing) {
    enum Way { fails, isMissing, hasNoLibrary };
    for (const Way way : {fails, isMissing, hasNoLibrary}) {
        SimulatedMachine machine(os::win10);
        if (way == fails) {
            machine.system.sessions.environmentError = ERROR_ACCESS_DENIED;
        } else if (way == isMissing) {
            machine.system.modules.hideFunction("CreateEnvironmentBlock");
        } else {
            machine.system.modules.hideLibrary("userenv.dll");
        }
        VKDATA record{};
        EXPECT_EQ(LaunchProgram("line", "LPT1:", &record, companionNemb), nullptr);
        EXPECT_TRUE(machine.system.processes.starts.empty());
        expectCallsOf(machine.system, "CloseHandle", {});
        expectNoLeaks(machine.system, {"token#1"});
    }
}

TEST(LaunchProgram, AnEnvironmentThatCannotBeFreedIsLeft) {
    SimulatedMachine machine(os::win10);
    machine.system.modules.hideFunction("DestroyEnvironmentBlock");
    VKDATA record{};
    EXPECT_EQ(LaunchProgram("line", "LPT1:", &record, companionNemb), handleOf(Kind::process, 1));
    expectNoLeaks(machine.system, {"environment#1", "process#1", "thread#1"});
}

// Before 5.1 the environment's functions are looked up and not used.
TEST(LaunchProgram, WithoutTheEnvironmentsLibraryOlderSystemsStart) {
    for (const OsRelease& os : os::allWithoutPipes) {
        SimulatedMachine machine(os);
        machine.system.modules.hideLibrary("userenv.dll");
        VKDATA record{};
        EXPECT_EQ(LaunchProgram("line", networkPort, &record, companionNemb),
                  handleOf(Kind::process, 1));
        expectNoLeaks(machine.system, {"process#1", "thread#1"});
    }
}

TEST(LaunchProgram, LeavesTheThreadImpersonating) {
    const SimulatedMachine machine(os::win2000);
    VKDATA record{};
    LaunchProgram("line", networkPort, &record, companionNemb);
    ASSERT_EQ(machine.system.sessions.impersonating.size(), 1U);
    EXPECT_EQ(machine.system.sessions.impersonating.begin()->second, "token#1");
    EXPECT_EQ(machine.system.calls.count("RevertToSelf"), 0U);
}

}  // namespace
}  // namespace vok::test
