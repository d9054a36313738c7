#include "launch/user_session.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/logged_machine.h"
#include "support/session_lines.h"

namespace vok::test {
namespace {

constexpr std::uint32_t before = 4711;

// The calls are those that load the libraries and ask for the console's session, then these.
void expectCallsAfterLoading(const System& system, const Lines& calls) {
    Lines expected = consoleSessionLines;
    expected.insert(expected.end(), calls.begin(), calls.end());
    EXPECT_EQ(system.calls.lines(), expected);
}

TEST(UserToken, IsTheConsolesUsers) {
    LoggedMachine machine;
    machine.system.sessions.console = 3;
    HANDLE token = nullptr;
    std::uint32_t error = before;
    ::SetLastError(1234);
    EXPECT_EQ(GetUserTokenWts(&token, &error), 1);
    EXPECT_EQ(token, handleOf(Kind::token, 1));
    expectCallsOf(machine.system, "WTSQueryUserToken",
                  {"WTSQueryUserToken(3, out) = 1 -> token#1"});
    // The last error is whatever stands there, success or not; the token is its low 32 bits.
    expectMessages(machine.system, {"WTSQueryUserToken rc=1 lastError=" + std::to_string(error) +
                                    " token handle=6000004"});
}

TEST(UserToken, LibrariesAreLoadedByFullPathBeforeAnythingIsLookedUp) {
    const SimulatedMachine machine;
    HANDLE token = nullptr;
    std::uint32_t error = before;
    GetUserTokenWts(&token, &error);
    expectCallsAfterLoading(machine.system, {"WTSQueryUserToken(1, out) = 1 -> token#1"});
}

TEST(UserToken, WithoutRoomForItNothingIsAsked) {
    const LoggedMachine machine;
    std::uint32_t error = before;
    EXPECT_EQ(GetUserTokenWts(nullptr, &error), 0);
    EXPECT_EQ(error, before);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
    expectMessages(machine.system, {});
}

TEST(UserToken, AFailureTellsItsCode) {
    for (const DWORD code : {DWORD{ERROR_PRIVILEGE_NOT_HELD}, DWORD{ERROR_NO_TOKEN}}) {
        LoggedMachine machine;
        machine.system.sessions.userTokenError = code;
        HANDLE token = nullptr;
        std::uint32_t error = before;
        EXPECT_EQ(GetUserTokenWts(&token, &error), 0);
        EXPECT_EQ(error, code);
        EXPECT_EQ(token, nullptr);
        expectMessages(machine.system, {"WTSQueryUserToken rc=0 lastError=" + std::to_string(code) +
                                        " token handle=0"});
    }
}

// What one of these machines lacks, the library or the name in it.
struct Missing {
    const char* library;
    const char* function;
    void applyTo(System& system) const {
        if (library != nullptr) {
            system.modules.hideLibrary(library);
        }
        if (function != nullptr) {
            system.modules.hideFunction(function);
        }
    }
};

TEST(UserToken, WithoutTheQueryThereIsNone) {
    for (const Missing& missing :
         {Missing{"wtsapi32.dll", nullptr}, Missing{nullptr, "WTSQueryUserToken"}}) {
        LoggedMachine machine;
        missing.applyTo(machine.system);
        HANDLE token = nullptr;
        std::uint32_t error = before;
        EXPECT_EQ(GetUserTokenWts(&token, &error), 0);
        EXPECT_NE(error, before);
        EXPECT_EQ(machine.system.calls.count("WTSQueryUserToken"), 0U);
        EXPECT_EQ(machine.system.calls.count("WTSGetActiveConsoleSessionId"), 1U);
        expectMessages(
            machine.system,
            {"WTSQueryUserToken rc=0 lastError=" + std::to_string(error) + " token handle=0"});
    }
}

TEST(UserToken, WithoutTheConsolesSessionItIsThatOfSessionZero) {
    for (const Missing& missing :
         {Missing{"kernel32.dll", nullptr}, Missing{nullptr, "WTSGetActiveConsoleSessionId"}}) {
        SimulatedMachine machine;
        missing.applyTo(machine.system);
        HANDLE token = nullptr;
        std::uint32_t error = before;
        EXPECT_EQ(GetUserTokenWts(&token, &error), 1);
        expectCallsOf(machine.system, "WTSQueryUserToken",
                      {"WTSQueryUserToken(0, out) = 1 -> token#1"});
    }
}

// Looking up in no library at all would be the program's own.
TEST(UserToken, NothingIsLookedUpInALibraryThatIsNotThere) {
    SimulatedMachine machine;
    machine.system.modules.hideLibrary("wtsapi32.dll");
    machine.system.modules.hideLibrary("kernel32.dll");
    HANDLE token = nullptr;
    std::uint32_t error = before;
    EXPECT_EQ(GetUserTokenWts(&token, &error), 0);
    std::uint32_t process = before;
    EXPECT_EQ(FindOutSessionInfo(&error, &process), 0U);
    EXPECT_EQ(process, 0U);
    EXPECT_EQ(machine.system.calls.count("LoadLibraryA"), 4U);
    expectCallsOf(machine.system, "GetProcAddress", {});
}

TEST(SessionInfo, TellsTheConsolesSessionAndThisProcesss) {
    LoggedMachine machine;
    machine.system.sessions.console = 3;
    machine.system.sessions.own = 5;
    std::uint32_t console = before;
    std::uint32_t process = before;
    EXPECT_EQ(FindOutSessionInfo(&console, &process), 0U);
    EXPECT_EQ(console, 3U);
    EXPECT_EQ(process, 5U);
    expectCallsOf(machine.system, "ProcessIdToSessionId",
                  {"ProcessIdToSessionId(0x1a2c, out) = 1 -> 5"});
    expectMessages(machine.system, {"+FindOutSessionInfo", "-FindOutSessionInfo"});
}

TEST(SessionInfo, LooksUpTheTokensQueryAndLeavesIt) {
    const SimulatedMachine machine;
    std::uint32_t console = before;
    std::uint32_t process = before;
    FindOutSessionInfo(&console, &process);
    expectCallsAfterLoading(machine.system,
                            {R"(GetProcAddress(kernel32, "ProcessIdToSessionId") = 0 -> found)",
                             "ProcessIdToSessionId(0x1a2c, out) = 1 -> 1"});
}

TEST(SessionInfo, EntryPointsThatAreMissingOneByOne) {
    const struct {
        Missing missing;
        std::uint32_t console;
        std::uint32_t process;
    } cases[] = {
        {{"wtsapi32.dll", nullptr}, 3, 5},
        {{nullptr, "WTSQueryUserToken"}, 3, 5},
        {{nullptr, "WTSGetActiveConsoleSessionId"}, before, 5},
        {{nullptr, "ProcessIdToSessionId"}, 3, 0},
        {{"kernel32.dll", nullptr}, before, 0},
    };
    for (const auto& one : cases) {
        SimulatedMachine machine;
        machine.system.sessions.console = 3;
        machine.system.sessions.own = 5;
        one.missing.applyTo(machine.system);
        std::uint32_t console = before;
        std::uint32_t process = before;
        EXPECT_EQ(FindOutSessionInfo(&console, &process), 0U);
        EXPECT_EQ(console, one.console);
        EXPECT_EQ(process, one.process);
    }
}

TEST(SessionInfo, ASessionThatCannotBeToldCountsAsZero) {
    SimulatedMachine machine;
    machine.system.faults.fail("ProcessIdToSessionId");
    std::uint32_t console = before;
    std::uint32_t process = before;
    EXPECT_EQ(FindOutSessionInfo(&console, &process), 0U);
    EXPECT_EQ(process, 0U);
}

TEST(SpoolerIsApart, OnlyWhereThereAreSessionsAndTheyDiffer) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        SimulatedMachine machine(os);
        machine.system.sessions.own = 0;
        machine.system.sessions.console = 1;
        EXPECT_EQ(spoolerIsApart(), os.isNtFrom(5, 1));
        machine.system.sessions.console = 0;
        EXPECT_FALSE(spoolerIsApart());
        EXPECT_EQ(machine.system.calls.count("ProcessIdToSessionId"), os.isNtFrom(5, 1) ? 2U : 0U);
    }
}

// Without an answer both count as session 0.
TEST(SpoolerIsApart, WithoutTheConsolesSessionItIsZero) {
    SimulatedMachine machine(os::win7);
    machine.system.modules.hideFunction("WTSGetActiveConsoleSessionId");
    machine.system.sessions.own = 0;
    EXPECT_FALSE(spoolerIsApart());
    machine.system.sessions.own = 1;
    EXPECT_TRUE(spoolerIsApart());
}

}  // namespace
}  // namespace vok::test
