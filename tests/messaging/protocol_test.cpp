#include "messaging/protocol.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/guarded_bytes.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

const std::string nembBlock(VOK_NEMB_BLOCK_SIZE, 'n');
const std::string dralBlock(VOK_DRAL_BLOCK_SIZE, 'd');

TEST(ReplyText, NamesThreeRepliesAndCountsTheRest) {
    const struct {
        Reply reply;
        const char* text;
    } cases[] = {{0, "NOPRINT"},
                 {1, "YESPRINT"},
                 {2, "WAITPRINT"},
                 {3, "3"},
                 {7, "7"},
                 {1314, "1314"},
                 {-1, "-1"},
                 {0x7FFFFFFF, "2147483647"},
                 {0x80000000, "-2147483648"},
                 {0xFFFFFFFF, "-1"},
                 {0x100000000, "NOPRINT"},
                 {0x100000002, "WAITPRINT"},
                 {0x500000007, "7"}};
    for (const auto& one : cases) {
        EXPECT_EQ(ReplyText(one.reply), one.text) << one.reply;
    }
}

TEST(CopyData, CarriesIdentifierAndBlockAndBringsTheWholeReply) {
    SimulatedMachine machine;
    Window& window = machine.system.desktop.add("any", "any", {0x100000007, -1});
    EXPECT_EQ(sendCopyData(window.handle, 0xFFFFFFFF, dralBlock.data(), VOK_DRAL_BLOCK_SIZE),
              0x100000007);
    EXPECT_EQ(sendCopyData(window.handle, SM_OPENJOB, nullptr, VOK_NEMB_BLOCK_SIZE), -1);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"SendMessageA(window#1, 74, 0, copydata{4294967295, bytes[36] 64 64 64 64})"
                     " = 4294967303",
                     "SendMessageA(window#1, 74, 0, copydata{1125, null}) = -1"}));
    EXPECT_EQ(window.received.at(0).data, dralBlock);
}

TEST(ConnectPipe, AClientThatIsThereAlreadyCountsAsOneThatComes) {
    for (const auto comes : {PipeClient::Comes::whileWaiting, PipeClient::Comes::beforeWaiting}) {
        LoggedMachine machine;
        PipeClient client;
        client.comes = comes;
        EXPECT_TRUE(connectPipe(machine.system.pipes.open("pipe", client, false)));
        expectMessages(machine.system, {});
    }
}

TEST(ConnectPipe, AnyOtherErrorIsLogged) {
    for (const DWORD code : {DWORD{ERROR_NO_DATA}, DWORD{534}, DWORD{ERROR_PIPE_LISTENING}}) {
        LoggedMachine machine;
        PipeClient client;
        client.connectError = code;
        EXPECT_FALSE(connectPipe(machine.system.pipes.open("pipe", client, false)));
        expectMessages(
            machine.system,
            {"ConnectNamedPipe failed! GetLastError = " + std::to_string(code) + "rc = YESPRINT"});
    }
}

// A connect that succeeds is one, whatever error stands there from before.
TEST(ConnectPipe, SuccessNeedsNoError) {
    const SimulatedMachine machine;
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_TRUE(connectPipe(System::current().pipes.open("pipe", {}, false)));
}

TEST(WriteNembPipe, WritesIdentifierAndBlockAndReadsTheReply) {
    SimulatedMachine machine;
    const HANDLE pipe = machine.system.pipes.open("pipe", PipeClient::answering({-7}));
    const GuardedBytes block(nembBlock.data(), nembBlock.size(), GuardedBytes::Use::readOnly);
    EXPECT_EQ(WriteNembPipe(pipe, block.data(), 0x01020304), -7);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"WriteFile(pipe#1, bytes[4] 04 03 02 01, 4, out, null) = 1",
                     "WriteFile(pipe#1, bytes[552] 6e 6e 6e 6e, 552, out, null) = 1",
                     "ReadFile(pipe#1, out, 4, out, null) = 1 -> bytes[4] f9 ff ff ff"}));
    EXPECT_EQ(machine.system.pipes.last("pipe").writes.at(1), nembBlock);
}

TEST(WriteDralPipe, WritesTheBlockAloneAndReadsTheReply) {
    SimulatedMachine machine;
    const HANDLE pipe = machine.system.pipes.open("pipe", PipeClient::answering({7}));
    const GuardedBytes block(dralBlock.data(), dralBlock.size(), GuardedBytes::Use::readOnly);
    EXPECT_EQ(WriteDralPipe(pipe, block.data()), 7);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"WriteFile(pipe#1, bytes[36] 64 64 64 64, 36, out, null) = 1",
                     "ReadFile(pipe#1, out, 4, out, null) = 1 -> bytes[4] 07 00 00 00"}));
    EXPECT_EQ(machine.system.pipes.last("pipe").writes, Lines{dralBlock});
}

TEST(WritePipe, WithoutPipeOrBlockNothingIsCalled) {
    SimulatedMachine machine;
    const HANDLE pipe = machine.system.pipes.open("pipe");
    EXPECT_EQ(WriteNembPipe(nullptr, nembBlock.data(), 1), 0);
    EXPECT_EQ(WriteNembPipe(pipe, nullptr, 1), 0);
    EXPECT_EQ(WriteNembPipe(nullptr, nullptr, 1), 0);
    EXPECT_EQ(WriteDralPipe(nullptr, dralBlock.data()), 0);
    EXPECT_EQ(WriteDralPipe(pipe, nullptr), 0);
    EXPECT_EQ(WriteDralPipe(nullptr, nullptr), 0);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

// Bytes that are not answered stay as the word began.
TEST(WritePipe, AnswersThatAreCutShort) {
    const struct {
        const char* answer;
        size_t size;
        LONG nemb;
        LONG dral;
    } cases[] = {{"", 0, 1, 0},
                 {"\x05", 1, 5, 5},
                 {"\x05\x06", 2, 0x605, 0x605},
                 {"\x05\x06\x07", 3, 0x70605, 0x70605},
                 {"\0\0\0", 3, 0, 0},
                 {"\x05\x06\x07\x08", 4, 0x8070605, 0x8070605}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.size);
        SimulatedMachine machine;
        PipeClient client;
        client.answers = {std::string(one.answer, one.size)};
        EXPECT_EQ(WriteNembPipe(machine.system.pipes.open("nemb", client), nembBlock.data(), 1),
                  one.nemb);
        EXPECT_EQ(WriteDralPipe(machine.system.pipes.open("dral", client), dralBlock.data()),
                  one.dral);
    }
}

// The client that is gone: NEMB's word begins as the raw result of its first write.
TEST(WritePipe, FirstWriteThatFails) {
    SimulatedMachine machine;
    PipeClient silent;
    silent.answers = {""};
    machine.system.faults.fail("WriteFile", 2);
    EXPECT_EQ(WriteNembPipe(machine.system.pipes.open("nemb", silent), nembBlock.data(), 1), 0);
    machine.system.faults.fail("WriteFile", Failure{3});
    EXPECT_EQ(WriteNembPipe(machine.system.pipes.open("nemb", silent), nembBlock.data(), 1), 3);
    machine.system.faults.fail("WriteFile", 2);
    EXPECT_EQ(WriteDralPipe(machine.system.pipes.open("dral", silent), dralBlock.data()), 0);
}

// Whatever fails, every call is made.
TEST(WritePipe, FailuresDoNotEndTheExchange) {
    for (size_t n = 1; n <= 2; ++n) {
        SimulatedMachine machine;
        const HANDLE pipe = machine.system.pipes.open("nemb", PipeClient::answering({2}));
        machine.system.faults.fail("WriteFile", 0, n);
        EXPECT_EQ(WriteNembPipe(pipe, nembBlock.data(), 1), 2);
        EXPECT_EQ(machine.system.calls.count("WriteFile"), 2U);
    }
    SimulatedMachine machine;
    const HANDLE pipe = machine.system.pipes.open("dral", PipeClient::answering({2}));
    machine.system.faults.fail("WriteFile");
    EXPECT_EQ(WriteDralPipe(pipe, dralBlock.data()), 2);
    machine.system.faults.fail("ReadFile");
    EXPECT_EQ(WriteDralPipe(pipe, dralBlock.data()), 0);
    machine.system.faults.fail("ReadFile");
    EXPECT_EQ(WriteNembPipe(pipe, nembBlock.data(), 1), 1);
}

TEST(ClosePipe, DisconnectsClosesAndEmptiesTheSlot) {
    SimulatedMachine machine;
    machine.system.calls.recordAlso("GetLastError");
    HANDLE slot = machine.system.pipes.open("pipe");
    EXPECT_EQ(ClosePipe(&slot), 1);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"DisconnectNamedPipe(pipe#1) = 1", "CloseHandle(pipe#1) = 1"}));
    expectNoLeaks(machine.system);
}

TEST(ClosePipe, WithoutASlotNothingIsCalled) {
    const SimulatedMachine machine;
    EXPECT_EQ(ClosePipe(nullptr), 0);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

TEST(ClosePipe, ANullHandleIsClosedLikeAnyOther) {
    const SimulatedMachine machine;
    HANDLE slot = nullptr;
    EXPECT_EQ(ClosePipe(&slot), 0);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(machine.system.calls.lines(), (Lines{"DisconnectNamedPipe(null) = 0 (error 6)",
                                                   "CloseHandle(null) = 0 (error 6)"}));
}

TEST(ClosePipe, ADisconnectThatFailsIsReturnedAndTheHandleClosed) {
    SimulatedMachine machine;
    HANDLE slot = machine.system.pipes.open("pipe");
    machine.system.faults.fail("DisconnectNamedPipe");
    machine.system.calls.recordAlso("GetLastError");
    EXPECT_EQ(ClosePipe(&slot), 0);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(machine.system.calls.count("GetLastError"), 1U);
    expectNoLeaks(machine.system);
}

TEST(OpenJobFlag, IsOneBitOfTheWord) {
    for (const DWORD others : {0x00000000U, 0xFFFFFFEFU}) {
        VKDATA record{};
        record.epDoc = others;
        EXPECT_FALSE(isJobOpen(record));
        setJobOpen(record);
        EXPECT_TRUE(isJobOpen(record));
        EXPECT_EQ(record.epDoc, others | 0x10U);
        clearJobOpen(record);
        EXPECT_EQ(record.epDoc, others);
    }
}

TEST(TraceEvent, WritesItsNameTwiceOrTheTextOfItsFailure) {
    const LoggedMachine machine;
    traceEvent("sendMsgEx");
    expectMessages(machine.system, {"+sendMsgEx", "-sendMsgEx"});
}

// Without a logger there is nothing to trace with, and nothing to say so.
TEST(TraceEvent, WithoutALoggerGoesOn) {
    SimulatedMachine machine;
    EXPECT_NO_THROW(traceEvent("sendMsgEx"));
    EXPECT_FALSE(machine.system.files.exists(machine.system.logPath()));
}

}  // namespace
}  // namespace vok::test
