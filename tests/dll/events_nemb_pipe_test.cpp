// VOKSendNembMsg by pipe.
#include <gtest/gtest.h>

#include <string>

#include "dll/event_case.h"

namespace vok::test {
namespace {

std::string handleLine(const std::string& event, const PipeCase& one) {
    return event + ". Nemb HPIPE = " + logText(one.handle);
}

std::string replyLine(const std::string& event, const PipeCase& one) {
    return event + " WriteNembPipe rc = " + replyText(one.answer.fromNemb);
}

// Only the opening connects: before it nothing can be written, and the reply is the result of that.
template <class Check>
void onEachConnectedCase(const Check& check) {
    onEachPipeCase(To::nemb, [&](const PipeCase& one) {
        if (one.isConnected) {
            check(one);
        }
    });
}

TEST(NembByPipe, OpenJob) {
    onEachPipeCase(To::nemb, [](const PipeCase& one) {
        const std::string begin = handleLine("SM_OPENJOB", one);
        if (!isOpen(one.epDoc)) {
            expectEvent(one.job, To::nemb, 1125,
                        {1,
                         one.epDoc,
                         one.handle,
                         {begin, "OPENJOB flag was NOT set in epDoc. rc = YESPRINT"},
                         {}});
            return;
        }
        expectEvent(one.job, To::nemb, 1125,
                    {one.answer.fromNemb,
                     one.epDoc,
                     one.handle,
                     {begin, replyLine("OPENJOB", one)},
                     Lines{one.connects()} + one.exchanges(To::nemb, 1125)});
        EXPECT_EQ(one.pipe.writes, (Lines{{"\x65\x04\0\0", 4}, one.job.nembBlock.bytes()}));
    });
}

TEST(NembByPipe, CloseJob) {
    onEachConnectedCase([](const PipeCase& one) {
        const std::string begin = handleLine("SM_CLOSEJOB", one);
        if (!isOpen(one.epDoc)) {
            expectEvent(one.job, To::nemb, 1127,
                        {1,
                         one.epDoc,
                         nullptr,
                         {begin, "OPENJOB flag was NOT set in epDoc", "Close PIPE. rc = YESPRINT"},
                         one.closes()});
            return;
        }
        one.job.system.clock.setTick(3000000000);
        expectEvent(one.job, To::nemb, 1127,
                    {1,
                     one.epDoc & ~0x10u,
                     nullptr,
                     {begin, replyLine("CLOSEJOB", one),
                      "Close PIPENon Root Session - EndJobTime=3000000000"},
                     one.exchanges(To::nemb, 1127) + one.closes()});
    });
}

TEST(NembByPipe, TimeOfACloseIsTakenAfterThePipeIsClosed) {
    Job job(os::winXp);
    PipeClient client;
    client.answer = [&](const std::string&) {
        job.system.clock.advance(30);
        return replyBytes(2);
    };
    job.record.hNEMB = job.system.pipes.open("pipe", client);
    job.record.nembMode = VOK_MODE_PIPE;
    job.record.epDoc = 0x10;
    EXPECT_EQ(job.tellNemb(SM_CLOSEJOB), 1);
    EXPECT_EQ(job.newLines().back(), "Close PIPENon Root Session - EndJobTime=100030");
}

TEST(NembByPipe, CancelJob) {
    onEachConnectedCase([](const PipeCase& one) {
        expectEvent(one.job, To::nemb, 1137,
                    {1,
                     one.epDoc,
                     nullptr,
                     {handleLine("SM_CANCELJOB", one), replyLine("CANCELJOB", one),
                      "Close PIPE. rc = TRUE"},
                     one.exchanges(To::nemb, 1137) + one.closes()});
    });
}

TEST(NembByPipe, AnyOtherEventIsAPages) {
    for (const DWORD id : {0u, 1130u, 1135u, 1136u, 0xFFFFFFFFu}) {
        onEachConnectedCase([id](const PipeCase& one) {
            expectEvent(
                one.job, To::nemb, id,
                {1,
                 one.epDoc,
                 one.handle,
                 {handleLine("SM_STARTPAGE/ENDPAGE", one), replyLine("STARTPAGE/ENDPAGE", one)},
                 one.exchanges(To::nemb, id)});
        });
    }
}

struct BrokenJob : Job {
    explicit BrokenJob(const OsRelease& os) : Job(os) {
        record.nembMode = VOK_MODE_PIPE;
        record.epDoc = 0x10;
    }
};

TEST(NembsBrokenPipe, OpenJobKeepsThePipe) {
    onEach<BrokenJob>(os::allWithPipes, [](BrokenJob& job) {
        for (const DWORD error : {6u, 231u, 232u, 536u}) {
            PipeClient client;
            client.connectError = error;
            const HANDLE pipe = job.system.pipes.open("pipe", client, false);
            job.record.hNEMB = pipe;
            const std::string number = std::to_string(error);
            expectEvent(
                job, To::nemb, 1125,
                {1,
                 0x10,
                 pipe,
                 {"SM_OPENJOB. Nemb HPIPE = " + logText(pipe),
                  "ConnectNamedPipe failed! GetLastError = " + number + "rc = YESPRINT"},
                 {"ConnectNamedPipe(" + handleName(pipe) + ", null) = 0 (error " + number + ")"}});
        }
    });
}

TEST(NembsBrokenPipe, NoHandle) {
    onEach<BrokenJob>(os::allNt, [](BrokenJob& job) {
        for (const DWORD id : {1125u, 1127u, 1135u, 1137u}) {
            expectEvent(
                job, To::nemb, id,
                {1, 0x10, nullptr, {"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"}, {}});
        }
    });
}

// The word begins as the result of the first write, and that is 0 when it fails.
TEST(NembsBrokenPipe, OpenJobToANembThatDies) {
    const struct {
        size_t takes;
        LONG reply;
    } cases[] = {{4, 1}, {5, 1}, {556, 1}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.takes);
        BrokenJob job(os::win7);
        PipeClient client = PipeClient::answering({0});
        client.takes = one.takes;
        job.record.hNEMB = job.system.pipes.open("pipe", client);
        EXPECT_EQ(job.tellNemb(SM_OPENJOB), one.reply);
    }
    BrokenJob job(os::win7);
    job.record.hNEMB = job.system.pipes.open("pipe", PipeClient::answering({7}));
    job.system.faults.fail("WriteFile", Failure{FALSE, ERROR_NO_DATA}, 1, Lasting::forEver);
    job.system.faults.fail("ReadFile");
    job.record.epDoc = 0x10;
    EXPECT_EQ(job.tellNemb(SM_OPENJOB), 0);
}

TEST(NembsBrokenPipe, SecondCloseFindsNoPipe) {
    BrokenJob job(os::win10);
    job.record.hNEMB = job.system.pipes.open("pipe", PipeClient::answering({0}));
    EXPECT_EQ(job.tellNemb(SM_CLOSEJOB), 1);
    EXPECT_EQ(job.record.hNEMB, nullptr);
    job.newLines();
    expectEvent(job, To::nemb, 1127,
                {1, 0, nullptr, {"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"}, {}});
    job.expectNothingOpenBut();
}

TEST(NembsBrokenPipe, DisconnectThatFailsStillClosesIt) {
    for (const DWORD id : {1127u, 1137u}) {
        BrokenJob job(os::winXp);
        job.record.hNEMB = job.system.pipes.open("pipe", PipeClient::answering({1}));
        job.system.faults.fail("DisconnectNamedPipe");
        EXPECT_EQ(job.tellNemb(id), 1);
        EXPECT_EQ(job.record.hNEMB, nullptr);
        job.expectNothingOpenBut();
    }
}

}  // namespace
}  // namespace vok::test
