// What the log shows of a job on each route, line by line as it is written.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "messaging/send_dral.h"
#include "messaging/send_nemb.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

constexpr BYTE block[VOK_NEMB_BLOCK_SIZE] = {'O', 'f', 'f', 'i', 'c', 'e'};
constexpr DWORD endOfPage = 1136;

// The lines of one sender's calls, each behind the trace that it begins with.
Lines transcript(const std::string& sender, const std::vector<Lines>& calls) {
    Lines all;
    for (const Lines& lines : calls) {
        all.push_back("+" + sender);
        all.push_back("-" + sender);
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

TEST(Transcript, DralByWindow) {
    LoggedMachine machine;
    VKDATA record{};
    record.hDRAL = machine.system.desktop.add("any", "any", {1, 7, 2, 0, 0}).handle;
    const std::string handle = logText(record.hDRAL);
    EXPECT_EQ(SendDRALMsgXP(block, SM_OPENJOB, &record), 1);
    EXPECT_EQ(SendDRALMsgXP(block, SM_STARTPAGE, &record), 7);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CLOSEJOB, &record), 2);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CLOSEJOB, &record), 0);
    record.hDRAL = machine.system.desktop.all().at(0)->handle;
    EXPECT_EQ(SendDRALMsgXP(block, SM_CANCELJOB, &record), 0);
    expectMessages(
        machine.system,
        transcript(
            "SendDRALMsgXP",
            {Lines{"SM_OPENJOB. Dral HWND = " + handle, "OPENJOB SendMessage rc = YESPRINT"},
             Lines{"STARTPAGE SendMessage rc = 7"},
             Lines{"SM_CLOSEJOB. Dral HWND = " + handle, "CLOSEJOB SendMessage rc = WAITPRINT",
                   "Sleep 1000"},
             Lines{"SM_CLOSEJOB. Dral HWND = " + handle, "CLOSEJOB SendMessage rc = NOPRINT",
                   "Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB", "Sleep 1000"},
             Lines{"SM_CANCELJOB. Dral HWND = " + handle, "CANCELJOB SendMessage rc = NOPRINT",
                   "Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB",
                   "Sleep 1000"}}));
}

TEST(Transcript, DralByPipe) {
    LoggedMachine machine;
    VKDATA record{};
    record.dralMode = VOK_MODE_PIPE;
    record.hDRAL = machine.system.pipes.open("pipe", PipeClient::answering({1, 7, 2, 0}));
    const std::string handle = logText(record.hDRAL);
    EXPECT_EQ(SendDRALMsgXP(block, SM_OPENJOB, &record), 1);
    EXPECT_EQ(SendDRALMsgXP(block, SM_STARTPAGE, &record), 7);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CLOSEJOB, &record), 2);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CLOSEJOB, &record), 0);
    EXPECT_EQ(SendDRALMsgXP(block, SM_STARTPAGE, &record), 1);
    expectMessages(
        machine.system,
        transcript(
            "SendDRALMsgXP",
            {Lines{"SM_OPENJOB. Dral HPIPE = " + handle, "OPENJOB WriteDralPipe. rc = YESPRINT"},
             Lines{"SM_STARTPAGE. Dral HPIPE = " + handle, "STARTPAGE WriteDralPipe. rc = 7"},
             Lines{"SM_CLOSEJOB. Dral HPIPE = " + handle, "CLOSEJOB WriteDralPipe rc = WAITPRINT",
                   "Sleep 1000 "},
             Lines{"SM_CLOSEJOB. Dral HPIPE = " + handle, "CLOSEJOB WriteDralPipe rc = NOPRINT",
                   "We did not get WAITPRINT in CLOSEJOB...Close PIPE", "Sleep 1000 "},
             Lines{"Invalid VokData or Pipe Handle "}}));
}

TEST(Transcript, DralsPipeCancelled) {
    LoggedMachine machine;
    VKDATA record{};
    record.dralMode = VOK_MODE_PIPE;
    record.hDRAL = machine.system.pipes.open("pipe", PipeClient::answering({2, 1}));
    const std::string handle = logText(record.hDRAL);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CANCELJOB, &record), 2);
    EXPECT_EQ(SendDRALMsgXP(block, SM_CANCELJOB, &record), 1);
    expectMessages(
        machine.system,
        transcript(
            "SendDRALMsgXP",
            {Lines{"SM_CANCELJOB. Dral HPIPE = " + handle,
                   "CANCELJOB WriteDralPipe. rc = WAITPRINT", "Sleep 1000 "},
             Lines{"SM_CANCELJOB. Dral HPIPE = " + handle, "CANCELJOB WriteDralPipe. rc = YESPRINT",
                   "We did not get WAITPRINT in CANCELJOB...Close PIPE", "Sleep 1000 "}}));
}

TEST(Transcript, DralOn9x) {
    LoggedMachine machine(os::win98);
    VKDATA record{};
    record.hDRAL = machine.system.desktop.add("any", "any", {1, 7, 2, 1, 2, 0}).handle;
    EXPECT_EQ(SendDRALMsg9X(block, SM_OPENJOB, &record), 1);
    EXPECT_EQ(SendDRALMsg9X(block, SM_STARTPAGE, &record), 7);
    EXPECT_EQ(SendDRALMsg9X(block, SM_CLOSEJOB, &record), 1);
    record.hDRAL = machine.system.desktop.all().at(0)->handle;
    EXPECT_EQ(SendDRALMsg9X(block, SM_CANCELJOB, &record), 0);
    expectMessages(
        machine.system,
        transcript(
            "SendDRALMsg9X",
            {Lines{"SM_OPENJOB", "OPENJOB SendMessage rc = YESPRINT"},
             Lines{"SM_STARTPAGE", "STARTPAGE SendMessage rc = 7"},
             Lines{"SM_CLOSEJOB", "Inside CLOSE JOB loop", "CLOSEJOB SendMessage rc = WAITPRINT",
                   "CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000", "Inside CLOSE JOB loop",
                   "CLOSEJOB SendMessage rc = YESPRINT"},
             Lines{"SM_CANCELJOB", "Inside CANCEL JOB loop", "CANCELJOB SendMessage rc = WAITPRINT",
                   "CANCELJOB SendMessage equals WAITPRINT. Sleep 1000", "Inside CANCEL JOB loop",
                   "CANCELJOB SendMessage rc = NOPRINT"}}));
}

TEST(Transcript, NembByWindow) {
    LoggedMachine machine;
    VKDATA record{};
    record.epDoc = VOK_EPDOC_OPENJOB;
    record.hNEMB = machine.system.desktop.add("any", "any", {1, 7, 2, 0}).handle;
    const std::string handle = logText(record.hNEMB);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_OPENJOB, &record), 1);
    EXPECT_EQ(SendNEMBMsgXP(block, endOfPage, &record), 7);
    machine.system.clock.setTick(4000000000);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CLOSEJOB, &record), 2);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CANCELJOB, &record), 0);
    expectMessages(
        machine.system,
        transcript(
            "SendNEMBMsgXP",
            {Lines{"SM_OPENJOB. Nemb HWND = " + handle, "OPENJOB SendMessage rc = YESPRINT"},
             Lines{"SM_STARTPAGE/ENDPAGE. Nemb HWND = " + handle,
                   "STARTPAGE/ENDPAGE SendMessage rc = 7"},
             Lines{"SM_CLOSEJOB. Nemb HWND = " + handle,
                   "CLOSEJOB SendMessage rc = WAITPRINT - Root Session EndJobTime=4000000000"},
             Lines{"SM_CANCELJOB. Nemb HWND = " + handle, "CANCELJOB SendMessage rc = NOPRINT"}}));
}

TEST(Transcript, NembByPipe) {
    LoggedMachine machine;
    VKDATA record{};
    record.nembMode = VOK_MODE_PIPE;
    record.epDoc = VOK_EPDOC_OPENJOB;
    record.hNEMB = machine.system.pipes.open("pipe", PipeClient::answering({2, 7, 0}));
    const std::string handle = logText(record.hNEMB);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_OPENJOB, &record), 2);
    EXPECT_EQ(SendNEMBMsgXP(block, endOfPage, &record), 1);
    machine.system.clock.setTick(4000000000);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CLOSEJOB, &record), 1);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CLOSEJOB, &record), 1);
    expectMessages(
        machine.system,
        transcript(
            "SendNEMBMsgXP",
            {Lines{"SM_OPENJOB. Nemb HPIPE = " + handle, "OPENJOB WriteNembPipe rc = WAITPRINT"},
             Lines{"SM_STARTPAGE/ENDPAGE. Nemb HPIPE = " + handle,
                   "STARTPAGE/ENDPAGE WriteNembPipe rc = 7"},
             Lines{"SM_CLOSEJOB. Nemb HPIPE = " + handle, "CLOSEJOB WriteNembPipe rc = NOPRINT",
                   "Close PIPENon Root Session - EndJobTime=4000000000"},
             Lines{"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"}}));
}

TEST(Transcript, NembsPipeCancelledOrNeverOpened) {
    LoggedMachine machine;
    VKDATA record{};
    record.nembMode = VOK_MODE_PIPE;
    record.hNEMB = machine.system.pipes.open("pipe", PipeClient::answering({0}));
    const std::string first = logText(record.hNEMB);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CANCELJOB, &record), 1);
    record.hNEMB = machine.system.pipes.open("pipe");
    const std::string second = logText(record.hNEMB);
    EXPECT_EQ(SendNEMBMsgXP(block, SM_CLOSEJOB, &record), 1);
    expectMessages(
        machine.system,
        transcript("SendNEMBMsgXP",
                   {Lines{"SM_CANCELJOB. Nemb HPIPE = " + first,
                          "CANCELJOB WriteNembPipe rc = NOPRINT", "Close PIPE. rc = TRUE"},
                    Lines{"SM_CLOSEJOB. Nemb HPIPE = " + second,
                          "OPENJOB flag was NOT set in epDoc", "Close PIPE. rc = YESPRINT"}}));
}

TEST(Transcript, NembOn9x) {
    LoggedMachine machine(os::winMe);
    VKDATA record{};
    record.epDoc = VOK_EPDOC_OPENJOB;
    record.hNEMB = machine.system.desktop.add("any", "any", {1, 7, 2, 0}).handle;
    EXPECT_EQ(SendNEMBMsg9X(block, SM_OPENJOB, &record), 1);
    EXPECT_EQ(SendNEMBMsg9X(block, endOfPage, &record), 7);
    EXPECT_EQ(SendNEMBMsg9X(block, SM_CLOSEJOB, &record), 2);
    EXPECT_EQ(SendNEMBMsg9X(block, SM_CANCELJOB, &record), 0);
    record.epDoc = 0;
    EXPECT_EQ(SendNEMBMsg9X(block, SM_CLOSEJOB, &record), 1);
    expectMessages(
        machine.system,
        transcript("SendNEMBMsg9X",
                   {Lines{"SM_OPENJOB", "OPENJOB SendMessage rc = YESPRINT"},
                    Lines{"SM_STARTPAGE/ENDPAGE default. SendMessage rc = 7"},
                    Lines{"SM_CLOSEJOB", "CLOSEJOB SendMessage rc = WAITPRINT"},
                    Lines{"SM_CANCELJOB", "CANCELJOB SendMessage rc = NOPRINT"},
                    Lines{"SM_CLOSEJOB", "OPENJOB flag was NOT set in epDoc. rc = YESPRINT"}}));
}

}  // namespace
}  // namespace vok::test
