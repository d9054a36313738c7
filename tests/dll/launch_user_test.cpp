// How VOKLaunchXFiles starts a program in the user's context: which ports ask for it, whose token
// it takes, and what it falls back on.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "dll/launch_lines.h"

namespace vok::test {
namespace {

constexpr const char* networkPort = R"(\\server\queue)";

Lines networkStartBegins(const System& system) {
    return startBegins(system, "StartDRALXP") +
           Lines{"Using Messages in StartDRALXP", "dral title - DEMODRAL - Office",
                 "dral PATH - DEMODRAL.EXE",
                 R"(P2P Port. Launching App in the user context. Port = \\server\queue)"} +
           traceOf("LaunchProgram") + Lines{"The command line is " + dralCommand(system)};
}

// The log between the launch's first line and NEMB's start.
Lines dralsLines(Job& job) {
    Lines lines = job.newLines();
    const size_t begin = launchBegins().size();
    const auto end = std::find(lines.begin(), lines.end(), "+StartNEMBXP");
    EXPECT_GE(lines.size(), begin);
    return {lines.begin() + static_cast<ptrdiff_t>(begin), end};
}

TEST(LaunchForUser, NetworkPortBefore51TakesTheSpoolersToken) {
    for (const OsRelease& os : os::allWithoutPipes) {
        SCOPED_TRACE(os);
        Job job(os);
        EXPECT_EQ(job.launch(networkPort), 0);
        const Lines expected =
            networkStartBegins(job.system) +
            Lines{"Calling CPAU", lineOf("VokData->hDRALProc = ", job.record.hDRALProc),
                  lineOf("VokData->hDRALThread  = ", job.record.hDRALThread),
                  "Launching Dlar, Path = " + dralCommand(job.system),
                  "Dral Launched in User context. Dral HWND = "};
        EXPECT_EQ(dralsLines(job), expected);
        const Start& start = job.system.processes.starts.at(0);
        EXPECT_EQ(start.by, StartedBy::createProcessAsUser);
        EXPECT_EQ(start.token, "token#2");
        EXPECT_FALSE(start.hasEnvironment);
        EXPECT_EQ(job.record.hDRALProc, handleOf(Kind::process, 1));
        EXPECT_EQ(job.record.hDRALThread, handleOf(Kind::thread, 1));
        // The thread is left with the spooler's own token.
        ASSERT_EQ(job.system.sessions.impersonating.size(), 1u);
        EXPECT_EQ(job.system.sessions.impersonating.begin()->second, "token#1");
        EXPECT_EQ(job.system.handles.countOpen(Kind::token), 0u);
        EXPECT_EQ(job.system.calls.count("WTSQueryUserToken"), 0u);
    }
}

TEST(LaunchForUser, NetworkPortFrom51TakesTheUsersTokenAndEnvironment) {
    for (const OsRelease& os : os::allWithPipes) {
        SCOPED_TRACE(os);
        Job job(os);
        job.system.processes.onStart = [&](const Start&) {
            job.system.desktop.add("DRAL Hidden Window-", "any title");
        };
        EXPECT_EQ(job.launch(networkPort), 0);
        EXPECT_EQ(job.record.dralMode, 2u);
        EXPECT_EQ(job.record.hDRAL, handleOf(Kind::window, 1));
        const Lines lines = dralsLines(job);
        EXPECT_EQ(lines.back(),
                  lineOf("Dral Launched in User context. Dral HWND = ", handleOf(Kind::window, 1)));
        const Start& start = job.system.processes.starts.at(0);
        EXPECT_EQ(start.token, "token#1");
        EXPECT_TRUE(start.hasEnvironment);
        EXPECT_EQ(start.desktop, R"(Winsta0\Default)");
        // NEMB's way doesn't depend on the port.
        EXPECT_EQ(job.system.processes.starts.at(1).by, StartedBy::winExec);
    }
}

TEST(LaunchForUser, NetworkPortWhoseStartFails) {
    for (const OsRelease& os : os::allNt) {
        SCOPED_TRACE(os);
        Job job(os);
        job.system.processes.refuse("DRAL", ERROR_BAD_EXE_FORMAT);
        EXPECT_EQ(job.launch(networkPort), 0);
        Lines lines = dralsLines(job);
        ASSERT_GE(lines.size(), 5u);
        EXPECT_EQ(Lines(lines.end() - 5, lines.end()),
                  (Lines{"Calling CPAU", "CPAU Failed lasterror=193", "VokData->hDRALProc = ",
                         "VokData->hDRALThread  = ", "Failed to launch Dral"}));
        // By messages NEMB is started all the same.
        EXPECT_EQ(job.record.nembMode, 2u);
    }
}

struct PortCase {
    const char* port;
    bool isNetwork;
    const char* local;
};

TEST(LaunchForUser, WhatCountsAsANetworkPort) {
    const PortCase cases[] = {
        {"LPT1:", false, ""},
        {"", false, ""},
        {nullptr, false, ""},
        {R"(\\ab)", false, ""},
        {R"(\\abc)", false, ""},
        {R"(\\server\)", false, ""},
        {R"(\server\queue)", false, ""},
        {R"(\\HOST\queue)", false, ""},
        {R"(\\HOST\HOSTPRN)", false, ""},
        {R"(\\a\q)", true, R"(\\a\q)"},
        {R"(\\a\\)", true, R"(\\a\\)"},
        {R"(\\\ab)", true, R"(\\\ab)"},
        {R"(\\host\queue)", true, R"(\\host\queue)"},
        {R"(on HOST\\server\queue)", true, R"(\\server\queue)"},
        {R"(\\server\a\b)", true, R"(\\server\a\b)"},
    };
    for (const PortCase& one : cases) {
        SCOPED_TRACE(one.port ? one.port : "null");
        Job job(os::win2000);
        job.launch(one.port);
        EXPECT_EQ(job.system.calls.count("CreateProcessAsUserA"), one.isNetwork ? 1u : 0u);
        EXPECT_EQ(job.system.calls.count("WinExec"), one.isNetwork ? 1u : 2u);
        const Lines lines = job.newLines();
        const std::string port = one.port ? one.port : "";
        EXPECT_EQ(lines.at(2), "FriendlyName = Office, PortName = " + port);
        const std::string expected =
            "P2P Port. Launching App in the user context. Port = " + std::string(one.local);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), expected), one.isNetwork ? 1 : 0);
    }
}

TEST(LaunchForUser, ComputerNameThatCannotBeReadLeavesThePortWhole) {
    const std::string key = R"(SYSTEM\CurrentControlSet\Control\ComputerName\ActiveComputerName)";
    for (const bool isMissingValue : {false, true}) {
        Job job(os::win2000, Log::off);
        if (isMissingValue) {
            job.system.registry.removeValue(key, "ComputerName");
        } else {
            job.system.registry.deny(key);
        }
        job.launch(R"(\\HOST\queue)");
        EXPECT_EQ(job.system.calls.count("CreateProcessAsUserA"), 1u);
        EXPECT_EQ(job.system.handles.countOpen(Kind::key), 0u);
    }
}

struct TokenCase {
    DWORD error;  // of WTSQueryUserToken
    const char* port;
    bool byWinExec;
};

TEST(LaunchForUser, WithoutUserTokenByErrorAndPort) {
    const TokenCase cases[] = {{1008, "LPT1:", true},
                               {ERROR_ACCESS_DENIED, "LPT1:", true},
                               {ERROR_PRIVILEGE_NOT_HELD, "LPT1:", false},
                               {1008, networkPort, false},
                               {ERROR_PRIVILEGE_NOT_HELD, networkPort, false}};
    for (const OsRelease& os : os::allWithPipes) {
        for (const TokenCase& one : cases) {
            SCOPED_TRACE(std::string(os.name) + " " + std::to_string(one.error) + " " + one.port);
            Job job(os);
            job.system.separateSessions();
            job.system.sessions.userTokenError = one.error;
            const HANDLE before = handleOf(Kind::process, 8);
            job.record.hDRALProc = before;
            job.record.hNEMBThread = before;
            EXPECT_EQ(job.launch(one.port), 1);
            EXPECT_EQ(job.record.hDRAL, handleOf(Kind::pipe, 1));
            const Lines lines = job.newLines();
            EXPECT_EQ(std::count(lines.begin(), lines.end(),
                                 "WTSQueryUserToken rc=0 lastError=" + std::to_string(one.error) +
                                     " token handle=0"),
                      2);
            EXPECT_EQ(std::count(lines.begin(), lines.end(), "Launching via WinExec"),
                      one.byWinExec ? 2 : 0);
            EXPECT_EQ(job.record.hDRALProc, one.byWinExec ? before : handleOf(Kind::process, 1));
            EXPECT_EQ(job.record.hNEMBThread, one.byWinExec ? before : handleOf(Kind::thread, 2));
            for (const Start& start : job.system.processes.starts) {
                EXPECT_EQ(start.by,
                          one.byWinExec ? StartedBy::winExec : StartedBy::createProcessAsUser);
                EXPECT_EQ(start.show, one.byWinExec ? UINT{SW_SHOWNORMAL} : 0u);
                EXPECT_FALSE(start.hasEnvironment);
            }
            EXPECT_EQ(job.system.handles.countOpen(Kind::token), 0u);
        }
    }
}

TEST(LaunchForUser, MissingTokenFunctionFallsBackOnWinExec) {
    Job job(os::winXp);
    job.system.separateSessions();
    job.system.modules.hideFunction("WTSQueryUserToken");
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.system.processes.starts.at(0).by, StartedBy::winExec);
    job.system.modules.hideLibrary("wtsapi32.dll");
    EXPECT_EQ(job.launch(), 1);
    EXPECT_EQ(job.system.processes.starts.at(2).by, StartedBy::winExec);
    job.expectNothingOpenBut({"pipe#1", "pipe#2", "pipe#3", "pipe#4"});
}

TEST(LaunchForUser, WinExecThatFailsMakesNoPipe) {
    Job job(os::winXp);
    job.system.separateSessions();
    job.system.sessions.userTokenError = 1008;
    job.system.faults.fail("WinExec", 2);
    EXPECT_EQ(job.launch(), 0);
    EXPECT_EQ(job.record.hDRAL, nullptr);
    EXPECT_TRUE(job.system.pipes.all().empty());
    Lines lines = job.newLines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
              (Lines{"Launching via WinExec",
                     "Return from StartDRALXP Pipes. Dral HPIPE = ", launchFailed}));
}

// Nothing is closed and nothing logged: the token stays open.
TEST(LaunchForUser, EnvironmentThatCannotBeMadeEndsTheStart) {
    for (const bool isMissing : {false, true}) {
        Job job(os::win7);
        job.system.separateSessions();
        if (isMissing) {
            job.system.modules.hideFunction("CreateEnvironmentBlock");
        } else {
            job.system.sessions.environmentError = ERROR_ACCESS_DENIED;
        }
        EXPECT_EQ(job.launch(), 0);
        EXPECT_TRUE(job.system.processes.starts.empty());
        EXPECT_EQ(job.system.handles.countOpen(Kind::token), 1u);
        EXPECT_EQ(job.system.calls.count("DestroyEnvironmentBlock"), 0u);
        Lines lines = job.newLines();
        ASSERT_GE(lines.size(), 3u);
        EXPECT_TRUE(lines.end()[-3].starts_with("WTSQueryUserToken rc=1 lastError="));
        EXPECT_EQ(lines.end()[-2], "Return from StartDRALXP Pipes. Dral HPIPE = ");
    }
}

// None of the results on the way to the spooler's token is tested.
TEST(LaunchForUser, SpoolersTokenThatCannotBeHad) {
    for (const char* function :
         {"ImpersonateSelf", "OpenThreadToken", "ImpersonateLoggedOnUser", "DuplicateTokenEx"}) {
        SCOPED_TRACE(function);
        Job job(os::win2000);
        job.system.faults.fail(function);
        job.launch(networkPort);
        for (const char* called : {"ImpersonateSelf", "OpenThreadToken", "ImpersonateLoggedOnUser",
                                   "DuplicateTokenEx", "CreateProcessAsUserA"}) {
            EXPECT_EQ(job.system.calls.count(called), 1u) << called;
        }
        const bool started = std::string(function) == "ImpersonateLoggedOnUser";
        EXPECT_EQ(job.record.hDRALProc != nullptr, started);
        EXPECT_EQ(job.system.handles.countOpen(Kind::token), 0u);
    }
}

}  // namespace
}  // namespace vok::test
