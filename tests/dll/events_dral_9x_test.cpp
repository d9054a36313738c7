// VOKSendDralMsg on the 9x family.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dll/event_case.h"

namespace vok::test {
namespace {

TEST(DralOn9x, OpenJob) {
    onEachWindowCase(os::all9x, To::dral, [](const WindowCase& one) {
        if (isOpen(one.epDoc)) {
            expectEvent(
                one.job, To::dral, 1125,
                {1,
                 one.epDoc,
                 one.window.handle,
                 {"SM_OPENJOB", "Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT"},
                 {}});
            return;
        }
        expectEvent(one.job, To::dral, 1125,
                    {one.reply.result,
                     one.reply.isYes() ? one.epDoc | 0x10 : one.epDoc,
                     one.window.handle,
                     {"SM_OPENJOB", std::string("OPENJOB SendMessage rc = ") + one.reply.text},
                     {sentTo(one.window.handle, 1125, To::dral, one.reply.word)}});
        EXPECT_EQ(one.window.received.at(0).data, one.job.dralBlock.bytes());
    });
}

// What a loop logs and calls until DRAL answers something else than WAITPRINT; a window whose
// first reply is WAITPRINT is made to answer 2, 2, 1.
struct Loop {
    Lines log;
    Lines calls;
    LONG result;
    ULONGLONG milliseconds;
};
Loop loopOf(const WindowCase& one, DWORD id, const std::string& name, const std::string& event) {
    Loop loop{{}, {}, one.reply.result, 0};
    const auto turn = [&](LRESULT reply, const std::string& text) {
        loop.log =
            loop.log + Lines{"Inside " + name + " JOB loop", event + " SendMessage rc = " + text};
        loop.calls.push_back(sentTo(one.window.handle, id, To::dral, reply));
    };
    if (one.reply.isWait()) {
        one.window.replies = {2, 2, 1};
        for (int i = 0; i < 2; ++i) {
            turn(2, "WAITPRINT");
            loop.log.push_back(event + " SendMessage equals WAITPRINT. Sleep 1000");
            loop.calls.push_back("Sleep(1000) = 0");
            loop.milliseconds += 1000;
        }
        turn(1, "YESPRINT");
        loop.result = 1;
        return loop;
    }
    turn(one.reply.word, one.reply.text);
    return loop;
}

TEST(DralOn9x, CloseJob) {
    onEachWindowCase(os::all9x, To::dral, [](const WindowCase& one) {
        if (!isOpen(one.epDoc)) {
            expectEvent(one.job, To::dral, 1127,
                        {1,
                         one.epDoc,
                         nullptr,
                         {"SM_CLOSEJOB", "OPENJOB flag was NOT set in epDoc. rc = YESPRINT"},
                         {}});
            return;
        }
        one.window.reply = nullptr;
        const Loop loop = loopOf(one, 1127, "CLOSE", "CLOSEJOB");
        expectEvent(one.job, To::dral, 1127,
                    {loop.result, one.epDoc & ~0x10u, nullptr, Lines{"SM_CLOSEJOB"} + loop.log,
                     loop.calls, loop.milliseconds});
    });
}

TEST(DralOn9x, CloseJobClearsTheFlagBeforeItSends) {
    Job job(os::win98);
    DWORD seen = 1;
    Window& window = job.system.desktop.add("any", "any");
    window.reply = [&](const Message&) {
        seen = job.record.epDoc;
        return LRESULT{0};
    };
    job.record.hDRAL = window.handle;
    job.record.epDoc = 0x30;
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 0);
    EXPECT_EQ(seen, 0x20u);
}

TEST(DralOn9x, CancelJob) {
    onEachWindowCase(os::all9x, To::dral, [](const WindowCase& one) {
        const Loop loop = loopOf(one, 1137, "CANCEL", "CANCELJOB");
        expectEvent(one.job, To::dral, 1137,
                    {loop.result, one.epDoc, nullptr, Lines{"SM_CANCELJOB"} + loop.log, loop.calls,
                     loop.milliseconds});
    });
}

// There is no bound: ten minutes are waited for as well.
TEST(DralOn9x, WaitsForAsLongAsDralAsksTo) {
    for (const DWORD id : {1127u, 1137u}) {
        Job job(os::win95);
        Window& window = job.system.desktop.add("any", "any", std::vector<LRESULT>(600, 2));
        window.replies.push_back(7);
        job.record.hDRAL = window.handle;
        job.record.epDoc = 0x10;
        EXPECT_EQ(job.tellDral(id), 7);
        EXPECT_EQ(window.received.size(), 601u);
        EXPECT_EQ(job.system.clock.passed(), 600000u);
    }
}

TEST(DralOn9x, StartPage) {
    onEachWindowCase(os::all9x, To::dral, [](const WindowCase& one) {
        expectEvent(one.job, To::dral, 1135,
                    {one.reply.result,
                     one.epDoc,
                     one.window.handle,
                     {"SM_STARTPAGE", std::string("STARTPAGE SendMessage rc = ") + one.reply.text},
                     {sentTo(one.window.handle, 1135, To::dral, one.reply.word)}});
    });
}

TEST(DralOn9x, OtherEventsAreNotSent) {
    expectOthersNotSentToDral(os::all9x, "Default. WARNING! We Should not be here. rc = YESPRINT");
}

// There is no search, no wait, and no pipe, whatever the record says.
TEST(DralOn9x, NoHandle) {
    onEach(os::all9x, [](Job& job) {
        job.record.hDRALProc = job.system.processes.open();
        job.system.desktop.add("DRAL Hidden Window-", "DRAL Hidden Window-");
        for (const DWORD mode : {0u, 1u, 2u}) {
            job.record.dralMode = mode;
            for (const DWORD id : {1125u, 1127u, 1135u, 1137u, 1130u}) {
                expectEvent(job, To::dral, id,
                            {1, 0, nullptr, {"VokData is Null. rc = YESPRINT"}, {}});
            }
        }
    });
}

TEST(DralOn9x, PipeModeIsNotLookedAt) {
    Job job(os::winMe);
    job.record.hDRAL = job.system.desktop.add("any", "any", {7}).handle;
    job.record.dralMode = VOK_MODE_PIPE;
    EXPECT_EQ(job.tellDral(SM_OPENJOB), 7);
}

}  // namespace
}  // namespace vok::test
