// VOKSendDralMsg by pipe.
#include <gtest/gtest.h>

#include <string>

#include "dll/event_case.h"

namespace vok::test {
namespace {

std::string handleLine(const std::string& event, const PipeCase& one) {
    return event + ". Dral HPIPE = " + logText(one.handle);
}

TEST(DralByPipe, OpenJob) {
    onEachPipeCase(To::dral, [](const PipeCase& one) {
        const std::string begin = handleLine("SM_OPENJOB", one);
        if (isOpen(one.epDoc)) {
            expectEvent(one.job, To::dral, 1125,
                        {1,
                         one.epDoc,
                         one.handle,
                         {begin, "OPENJOB flag was NOT set in epDoc. rc = YESPRINT"},
                         {}});
            return;
        }
        const LONG reply = one.answer.fromDral;
        // The attempt alone sets the flag.
        expectEvent(one.job, To::dral, 1125,
                    {reply,
                     one.epDoc | 0x10,
                     one.handle,
                     {begin, "OPENJOB WriteDralPipe. rc = " + replyText(reply)},
                     Lines{one.connects()} + one.exchanges(To::dral, 1125)});
        EXPECT_EQ(one.pipe.writes, Lines{one.job.dralBlock.bytes()});
    });
}

// The outcome of a close or cancel that is written: only WAITPRINT keeps the pipe, and a cancel
// that ends it clears the flag; the pause is always taken.
Outcome endOutcome(const PipeCase& one, DWORD id, const std::string& event,
                   const std::string& replyBegin) {
    const LONG reply = one.answer.fromDral;
    const Lines calls = Lines{one.connects()} + one.exchanges(To::dral, id);
    Lines log = {handleLine("SM_" + event, one), replyBegin + replyText(reply)};
    if (reply == WAITPRINT) {
        return {reply,
                one.epDoc,
                one.handle,
                log + Lines{"Sleep 1000 "},
                calls + Lines{"Sleep(1000) = 0"},
                1000};
    }
    log.push_back("We did not get WAITPRINT in " + event + "...Close PIPE");
    return {reply,
            id == 1137 ? one.epDoc & ~0x10u : one.epDoc,
            nullptr,
            log + Lines{"Sleep 1000 "},
            calls + one.closes() + Lines{"Sleep(1000) = 0"},
            1000};
}

TEST(DralByPipe, CloseJob) {
    onEachPipeCase(To::dral, [](const PipeCase& one) {
        if (isOpen(one.epDoc)) {
            expectEvent(one.job, To::dral, 1127,
                        endOutcome(one, 1127, "CLOSEJOB", "CLOSEJOB WriteDralPipe rc = "));
            return;
        }
        expectEvent(one.job, To::dral, 1127,
                    {1,
                     one.epDoc,
                     nullptr,
                     {handleLine("SM_CLOSEJOB", one),
                      "OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT"},
                     Lines{one.connects()} + one.closes()});
    });
}

TEST(DralByPipe, CancelJob) {
    onEachPipeCase(To::dral, [](const PipeCase& one) {
        expectEvent(one.job, To::dral, 1137,
                    endOutcome(one, 1137, "CANCELJOB", "CANCELJOB WriteDralPipe. rc = "));
    });
}

TEST(DralByPipe, StartPage) {
    onEachPipeCase(To::dral, [](const PipeCase& one) {
        if (!one.isConnected) {
            return;
        }
        const LONG reply = one.answer.fromDral;
        expectEvent(
            one.job, To::dral, 1135,
            {reply,
             one.epDoc,
             one.handle,
             {handleLine("SM_STARTPAGE", one), "STARTPAGE WriteDralPipe. rc = " + replyText(reply)},
             one.exchanges(To::dral, 1135)});
    });
}

TEST(DralByPipe, OtherEventsAreNotSent) {
    for (const DWORD id : {0u, 1130u, 1136u, 0xFFFFFFFFu}) {
        onEachPipeCase(To::dral, [id](const PipeCase& one) {
            if (one.answer.fromDral != 7) {
                return;
            }
            expectEvent(one.job, To::dral, id,
                        {1,
                         one.epDoc,
                         one.handle,
                         {"The Message Id = " + std::to_string(id),
                          "Default. WARNING! We should not be here. rc = YESPRINT "},
                         {}});
        });
    }
}

struct BrokenJob : Job {
    explicit BrokenJob(const OsRelease& os) : Job(os) { record.dralMode = VOK_MODE_PIPE; }
    // A pipe that can't be connected.
    void openPipe(DWORD error) {
        PipeClient client;
        client.connectError = error;
        record.hDRAL = system.pipes.open("pipe", client, false);
    }
    std::string connectCall(DWORD error) const {
        return "ConnectNamedPipe(" + handleName(record.hDRAL) + ", null) = 0 (error " +
               std::to_string(error) + ")";
    }
    static std::string failureText(DWORD error) {
        return "ConnectNamedPipe failed! GetLastError = " + std::to_string(error) + "rc = YESPRINT";
    }
};

TEST(DralsBrokenPipe, OpenJobKeepsThePipeAndTheFlag) {
    onEach<BrokenJob>(os::allWithPipes, [](BrokenJob& job) {
        for (const DWORD error : {6u, 231u, 232u, 536u}) {
            job.openPipe(error);
            job.record.epDoc = 0x100;
            const HANDLE pipe = job.record.hDRAL;
            expectEvent(job, To::dral, 1125,
                        {1,
                         0x110,
                         pipe,
                         {"SM_OPENJOB. Dral HPIPE = " + logText(pipe), job.failureText(error)},
                         {job.connectCall(error)}});
        }
    });
}

TEST(DralsBrokenPipe, CloseAndCancelCloseIt) {
    onEach<BrokenJob>(os::allWithPipes, [](BrokenJob& job) {
        for (const DWORD id : {1127u, 1137u}) {
            for (const DWORD epDoc : flagStates) {
                job.openPipe(232);
                job.record.epDoc = epDoc;
                const HANDLE pipe = job.record.hDRAL;
                const std::string name = handleName(pipe);
                const std::string event = id == 1127 ? "SM_CLOSEJOB" : "SM_CANCELJOB";
                expectEvent(job, To::dral, id,
                            {1,
                             epDoc,
                             nullptr,
                             {event + ". Dral HPIPE = " + logText(pipe), job.failureText(232)},
                             {job.connectCall(232), "DisconnectNamedPipe(" + name + ") = 1",
                              "CloseHandle(" + name + ") = 1"}});
            }
        }
    });
}

TEST(DralsBrokenPipe, DisconnectThatFailsStillClosesIt) {
    BrokenJob job(os::winXp);
    PipeClient client = PipeClient::answering({1});
    job.record.hDRAL = job.system.pipes.open("pipe", client);
    job.record.epDoc = 0x10;
    job.system.faults.fail("DisconnectNamedPipe");
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
    EXPECT_EQ(job.record.hDRAL, nullptr);
    job.expectNothingOpenBut();
}

TEST(DralsBrokenPipe, NoHandle) {
    onEach<BrokenJob>(os::allNt, [](BrokenJob& job) {
        for (const DWORD id : {1125u, 1127u, 1135u, 1137u, 1130u}) {
            expectEvent(job, To::dral, id,
                        {1, 0, nullptr, {"Invalid VokData or Pipe Handle "}, {}});
        }
    });
}

// DRAL goes away after part of the block, or between write and read.
TEST(DralsBrokenPipe, DralThatDiesInTheMiddleOfAFrame) {
    for (const size_t takes : {1u, 35u, 36u}) {
        BrokenJob job(os::win7);
        PipeClient client = PipeClient::answering({1});
        client.takes = takes;
        job.record.hDRAL = job.system.pipes.open("pipe", client);
        EXPECT_EQ(job.tellDral(SM_STARTPAGE), 0);
        EXPECT_EQ(job.newLines().back(), "STARTPAGE WriteDralPipe. rc = NOPRINT");
    }
}

// DRAL holds the job back twice; the connection stays the same.
TEST(DralsBrokenPipe, WaitKeepsTheConnection) {
    BrokenJob job(os::winXp);
    job.record.hDRAL = job.system.pipes.open("pipe", PipeClient::answering({1, 2, 2, 0}), false);
    EXPECT_EQ(job.tellDral(SM_OPENJOB), 1);
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 2);
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 2);
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 0);
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
    const PipeData& pipe = *job.system.pipes.all().at(0);
    EXPECT_EQ(pipe.connects, 1u);
    EXPECT_EQ(pipe.writes.size(), 4u);
    EXPECT_EQ(job.record.epDoc, 0x10u);
    job.expectNothingOpenBut();
}

}  // namespace
}  // namespace vok::test
