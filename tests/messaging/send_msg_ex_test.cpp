#include "messaging/send_msg_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "support/logged_machine.h"

namespace vok::test {
namespace {

constexpr BYTE payload[10] = {0x41, 0x42, 0x43};

TEST(SendMessageEx, EveryWayAndItsLine) {
    const HANDLE window = handleOf(Kind::window, 1);
    const HANDLE pipe = handleOf(Kind::pipe, 1);
    const struct {
        HANDLE companion;
        DWORD viaPipe;
        DWORD length;
        const char* line;  // behind the handle
        Lines calls;
        DWORD result;
    } cases[] = {
        {window,
         2,
         10,
         " viaPipe=2 dwMsg=1125 data=65 length=10",
         {"PostMessageA(window#1, 1125, 0, 65) = 1"},
         1},
        {window,
         0,
         1,
         " viaPipe=0 dwMsg=1125 data=65 length=1",
         {"PostMessageA(window#1, 1125, 0, 65) = 1"},
         1},
        {window, 2, 0, " viaPipe=2 dwMsg=1125 data=65 length=0", {}, 0},
        {nullptr, 2, 10, " viaPipe=2 dwMsg=1125 data=65 length=10", {}, 0},
        {nullptr, 1, 10, " viaPipe=1 dwMsg=1125 data=65 length=10", {}, 0},
        {pipe, 1, 0, " viaPipe=1 dwMsg=1125 data=65 length=0", {}, 0},
        {pipe,
         1,
         10,
         " viaPipe=1 dwMsg=1125 data=65 length=10",
         {"ConnectNamedPipe(pipe#1, null) = 0 (error 535)",
          "WriteFile(pipe#1, bytes[4] 65 04 00 00, 4, out, null) = 1",
          "WriteFile(pipe#1, bytes[10] 41 42 43 00, 10, out, null) = 1"},
         1},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.line);
        LoggedMachine machine;
        machine.system.desktop.add("any", "any");
        machine.system.pipes.open("pipe");
        EXPECT_EQ(sendMsgEx("Office", one.companion, one.viaPipe, SM_OPENJOB, payload, one.length),
                  one.result);
        const auto low = static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(one.companion));
        Lines expected = {"+sendMsgEx", "-sendMsgEx",
                          "FN=Office hXfile=" + std::to_string(low) + one.line};
        if (one.calls.empty()) {
            expected.emplace_back("Invalid input");
        }
        expectMessages(machine.system, expected);
        EXPECT_EQ(callLines(machine.system), one.calls);
    }
}

// Only the last error is looked at: also one that stands there from before the call.
TEST(SendMessageEx, APipeThatConnectsByTheCallWithAnOldErrorCountsAsConnected) {
    for (const DWORD old : {DWORD{ERROR_PIPE_CONNECTED}, DWORD{ERROR_SUCCESS}}) {
        SimulatedMachine machine;
        const HANDLE pipe = machine.system.pipes.open("pipe", {}, false);
        machine.system.faults.fail("ConnectNamedPipe", Failure{TRUE, old});
        ::SetLastError(ERROR_SUCCESS);
        sendMsgEx("Office", pipe, 1, SM_OPENJOB, payload, 10);
        EXPECT_EQ(machine.system.calls.count("WriteFile"), old == ERROR_PIPE_CONNECTED ? 2U : 0U);
    }
}

}  // namespace
}  // namespace vok::test
