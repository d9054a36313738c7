// The four senders by themselves: what their callers can't show of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "messaging/send_dral.h"
#include "messaging/send_nemb.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

using Sender = Reply (*)(const EventBlock*, DWORD, VKDATA*);

constexpr BYTE block[VOK_NEMB_BLOCK_SIZE] = {'O', 'f', 'f', 'i', 'c', 'e'};

TEST(Senders, WithoutARecordAnswerYes) {
    const struct {
        Sender sender;
        const char* name;
        const char* text;
    } cases[] = {
        {SendDRALMsgXP, "SendDRALMsgXP", "Invalid VokData or Pipe Handle "},
        {SendDRALMsg9X, "SendDRALMsg9X", "VokData is Null. rc = YESPRINT"},
        {SendNEMBMsgXP, "SendNEMBMsgXP", "Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"},
        {SendNEMBMsg9X, "SendNEMBMsg9X", "VokData is Null. rc = YESPRINT"},
    };
    for (const auto& one : cases) {
        for (const DWORD id : {1125U, 1127U, 1130U, 1135U, 1137U}) {
            const LoggedMachine machine;
            EXPECT_EQ(one.sender(block, id, nullptr), YESPRINT);
            expectMessages(machine.system,
                           {"+" + std::string(one.name), "-" + std::string(one.name), one.text});
        }
    }
}

// Replies are compared as machine words, and named by their low 32 bits alone.
TEST(Senders, AWideReplyIsNeitherYesNorWait) {
    for (const Sender sender : {SendDRALMsgXP, SendDRALMsg9X}) {
        LoggedMachine machine;
        VKDATA record{};
        record.hDRAL = machine.system.desktop.add("any", "any", {0x100000001, 0x100000002}).handle;
        EXPECT_EQ(sender(block, SM_OPENJOB, &record), 0x100000001);
        EXPECT_FALSE(isJobOpen(record));
        EXPECT_EQ(sender(block, SM_CANCELJOB, &record), 0x100000002);
        EXPECT_EQ(record.hDRAL, nullptr);
        const Lines lines = machine.system.logLines();
        EXPECT_NE(
            std::find(lines.begin(), lines.end(), "VOK        OPENJOB SendMessage rc = YESPRINT"),
            lines.end());
        EXPECT_NE(std::find(lines.begin(), lines.end(),
                            "VOK        CANCELJOB SendMessage rc = WAITPRINT"),
                  lines.end());
    }
}

TEST(Senders, ARefusedJobIsNotClosedAndTheWindowIsDropped) {
    for (const Sender sender : {SendDRALMsgXP, SendDRALMsg9X}) {
        SimulatedMachine machine;
        Window& window = machine.system.desktop.add("any", "any", {0});
        VKDATA record{};
        record.hDRAL = window.handle;
        EXPECT_EQ(sender(block, SM_OPENJOB, &record), NOPRINT);
        EXPECT_EQ(sender(block, SM_CLOSEJOB, &record), YESPRINT);
        EXPECT_EQ(record.hDRAL, nullptr);
        EXPECT_EQ(window.received.size(), 1U);
    }
}

TEST(Senders, CancelOn9xAsksUntilDralIsDone) {
    SimulatedMachine machine(os::win98);
    Window& window = machine.system.desktop.add("any", "any", {2, 2, 1});
    VKDATA record{};
    record.hDRAL = window.handle;
    record.epDoc = 0xFF;
    EXPECT_EQ(SendDRALMsg9X(block, SM_CANCELJOB, &record), YESPRINT);
    EXPECT_EQ(window.received.size(), 3U);
    expectCallsOf(machine.system, "Sleep", {"Sleep(1000) = 0", "Sleep(1000) = 0"});
    EXPECT_EQ(record.hDRAL, nullptr);
    EXPECT_EQ(record.epDoc, 0xFFU);
}

TEST(Senders, AFailedConnectLeavesTheFlagSet) {
    SimulatedMachine machine;
    PipeClient client;
    client.connectError = ERROR_NO_DATA;
    VKDATA record{};
    record.dralMode = VOK_MODE_PIPE;
    record.hDRAL = machine.system.pipes.open("pipe", client, false);
    EXPECT_EQ(SendDRALMsgXP(block, SM_OPENJOB, &record), YESPRINT);
    EXPECT_TRUE(isJobOpen(record));
    expectNoLeaks(machine.system, {"pipe#1"});
}

// Cancel clears the flag when it closes the pipe, close does not.
TEST(Senders, WhatEndsDralsPipeAndWhatBecomesOfTheFlag) {
    const struct {
        DWORD id;
        LONG reply;
        bool isOpen;
        bool isKept;
    } cases[] = {{SM_CLOSEJOB, YESPRINT, true, false},
                 {SM_CLOSEJOB, WAITPRINT, true, true},
                 {SM_CANCELJOB, YESPRINT, false, false},
                 {SM_CANCELJOB, WAITPRINT, true, true}};
    for (const auto& one : cases) {
        SimulatedMachine machine;
        VKDATA record{};
        record.dralMode = VOK_MODE_PIPE;
        record.hDRAL = machine.system.pipes.open("pipe", PipeClient::answering({one.reply}));
        record.epDoc = VOK_EPDOC_OPENJOB;
        EXPECT_EQ(SendDRALMsgXP(block, one.id, &record), one.reply);
        EXPECT_EQ(isJobOpen(record), one.isOpen);
        EXPECT_EQ(record.hDRAL != nullptr, one.isKept);
        expectCallsOf(machine.system, "Sleep", {"Sleep(1000) = 0"});
    }
}

TEST(Senders, OnlyTheReplyToAnOpeningComesOutOfNembsPipe) {
    for (const DWORD id :
         {DWORD{SM_OPENJOB}, DWORD{SM_CLOSEJOB}, DWORD{SM_CANCELJOB}, DWORD{1136}}) {
        SimulatedMachine machine;
        VKDATA record{};
        record.nembMode = VOK_MODE_PIPE;
        record.hNEMB = machine.system.pipes.open("pipe", PipeClient::answering({0}));
        record.epDoc = VOK_EPDOC_OPENJOB;
        EXPECT_EQ(SendNEMBMsgXP(block, id, &record), id == SM_OPENJOB ? NOPRINT : YESPRINT);
        EXPECT_EQ(machine.system.pipes.last("pipe").reads, 1U);
    }
}

TEST(Senders, NembThatNeverShowsItsWindowIsNotWaitedForWithoutItsProcess) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office");
    VKDATA record{};
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CANCELJOB, &record), NOPRINT);
    EXPECT_EQ(machine.system.calls.count("WaitForInputIdle"), 0U);
    EXPECT_EQ(machine.system.clock.passed(), 0U);
    record.hNEMBProc = machine.system.processes.open();
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CANCELJOB, &record), NOPRINT);
    expectCallsOf(machine.system, "WaitForInputIdle", {"WaitForInputIdle(process#1, 60000) = 0"});
}

}  // namespace
}  // namespace vok::test
