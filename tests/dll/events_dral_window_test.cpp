// VOKSendDralMsg on NT by window messages.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dll/event_case.h"

namespace vok::test {
namespace {

const std::string flagText = "OPENJOB flag was NOT set in epDoc. rc = YESPRINT";

TEST(DralByWindow, OpenJob) {
    onEachWindowCase(os::allNt, To::dral, [](const WindowCase& one) {
        const std::string begin = "SM_OPENJOB. Dral HWND = " + logText(one.window.handle);
        if (isOpen(one.epDoc)) {
            expectEvent(one.job, To::dral, 1125,
                        {1, one.epDoc, one.window.handle, {begin, flagText}, {}});
            EXPECT_TRUE(one.window.received.empty());
            return;
        }
        const DWORD after = one.reply.isYes() ? one.epDoc | 0x10 : one.epDoc;
        expectEvent(one.job, To::dral, 1125,
                    {one.reply.result,
                     after,
                     one.window.handle,
                     {begin, std::string("OPENJOB SendMessage rc = ") + one.reply.text},
                     {sentTo(one.window.handle, 1125, To::dral, one.reply.word)}});
        EXPECT_EQ(one.window.received.at(0).data, one.job.dralBlock.bytes());
    });
}

// The outcome of a close or cancel that is sent: the handle is kept for WAITPRINT alone, the pause
// is always taken.
Outcome endOutcome(const WindowCase& one, DWORD id, const std::string& event) {
    Lines log = {"SM_" + event + ". Dral HWND = " + logText(one.window.handle),
                 event + " SendMessage rc = " + one.reply.text};
    if (!one.reply.isWait()) {
        log.push_back("Reset DRAL handle, since we did not get WAITPRINT in " + event);
    }
    log.push_back("Sleep 1000");
    return {one.reply.result,
            one.epDoc,
            one.reply.isWait() ? one.window.handle : nullptr,
            log,
            {sentTo(one.window.handle, id, To::dral, one.reply.word), "Sleep(1000) = 0"},
            1000};
}

TEST(DralByWindow, CloseJob) {
    onEachWindowCase(os::allNt, To::dral, [](const WindowCase& one) {
        const std::string begin = "SM_CLOSEJOB. Dral HWND = " + logText(one.window.handle);
        expectEvent(one.job, To::dral, 1127,
                    isOpen(one.epDoc) ? endOutcome(one, 1127, "CLOSEJOB")
                                      : Outcome{1, one.epDoc, nullptr, {begin, flagText}, {}});
    });
}

TEST(DralByWindow, CancelJob) {
    onEachWindowCase(os::allNt, To::dral, [](const WindowCase& one) {
        expectEvent(one.job, To::dral, 1137, endOutcome(one, 1137, "CANCELJOB"));
    });
}

TEST(DralByWindow, StartPage) {
    onEachWindowCase(os::allNt, To::dral, [](const WindowCase& one) {
        expectEvent(one.job, To::dral, 1135,
                    {one.reply.result,
                     one.epDoc,
                     one.window.handle,
                     {std::string("STARTPAGE SendMessage rc = ") + one.reply.text},
                     {sentTo(one.window.handle, 1135, To::dral, one.reply.word)}});
    });
}

TEST(DralByWindow, OtherEventsAreNotSent) {
    expectOthersNotSentToDral(os::allNt, "Default. WARNING! We should not be here. rc = YESPRINT");
}

// Every mode but the pipe's means the window.
TEST(DralByWindow, ModesThatMeanTheWindow) {
    for (const DWORD mode : {0u, 2u, 3u, 0xFFFFFFFFu}) {
        Job job(os::winXp);
        Window& window = job.system.desktop.add("any", "any", {2});
        job.record.hDRAL = window.handle;
        job.record.dralMode = mode;
        EXPECT_EQ(job.tellDral(SM_STARTPAGE), 2);
    }
}

constexpr const char* hiddenName = "DRAL Hidden Window-4711";
const std::string noHandle = "Null Window Handle in SendDralMsgXP";
const std::string search = R"(FindWindowA(null, "DRAL Hidden Window-4711") = )";
const std::string nothing = "null (error 2)";

struct LostJob : Job {
    explicit LostJob(const OsRelease& os) : Job(os) {
        std::strcpy(record.dralTitleSuffix, "4711");
        record.dralMode = VOK_MODE_WINDOW;
    }
};

TEST(DralsLostWindow, FoundByItsTitleAndKept) {
    onEach<LostJob>(os::allNt, [](LostJob& job) {
        const Window& window = job.system.desktop.add("any class", hiddenName, {2});
        const std::string name = handleName(window.handle);
        const Lines reply = {"STARTPAGE SendMessage rc = WAITPRINT"};
        const std::string sent = sentTo(window.handle, 1135, To::dral, 2);
        expectEvent(job, To::dral, 1135,
                    {2, 0, window.handle, Lines{noHandle} + reply, Lines{search + name, sent}});
        expectEvent(job, To::dral, 1135, {2, 0, window.handle, reply, {sent}});
    });
}

TEST(DralsLostWindow, NotThereAndNoProcessToWaitFor) {
    onEach<LostJob>(os::allNt, [](LostJob& job) {
        for (const DWORD id : {1125u, 1127u, 1135u, 1137u, 1130u}) {
            expectEvent(job, To::dral, id,
                        {0,
                         0,
                         nullptr,
                         {noHandle, "Null Dral Handle, No Messages can be send"},
                         {search + nothing}});
        }
    });
}

struct WaitCase {
    DWORD result;
    const char* shown;
    Lines log;
};

const WaitCase waitCases[] = {
    {0, "0", {}},
    {1, "1", {}},
    {258, "258", {"Wait timed out while waiting for Dral initialization to complete"}},
    {0xFFFFFFFF,
     "4294967295 (error 6)",
     {"Wait failed while waiting for Dral initialization to complete"}},
};

// The second search is made whatever the wait's result.
TEST(DralsLostWindow, AppearsAfterTheWait) {
    for (const WaitCase& wait : waitCases) {
        for (const bool appears : {true, false}) {
            onEach<LostJob>(os::allNt, [&](LostJob& job) {
                SCOPED_TRACE(wait.shown);
                job.record.hDRALProc = job.system.processes.open();
                job.system.processes.idleResult = wait.result;
                job.system.processes.idleMilliseconds = 500000;
                job.system.processes.whileIdleWait = [&] {
                    if (appears) {
                        job.system.desktop.add("any class", hiddenName, {7});
                    }
                };
                Outcome expected;
                expected.milliseconds = 120000;
                expected.log =
                    Lines{noHandle, "Waiting for Dral to finish initialization. Sleeping"} +
                    wait.log + Lines{"Finished waiting. Attempting FindWindow again..."};
                expected.calls = {
                    search + nothing,
                    "WaitForInputIdle(process#1, 120000) = " + std::string(wait.shown),
                    search + (appears ? "window#1" : nothing)};
                if (appears) {
                    expected.result = 7;
                    expected.handle = handleOf(Kind::window, 1);
                    expected.log.push_back("STARTPAGE SendMessage rc = 7");
                    expected.calls.push_back(sentTo(expected.handle, 1135, To::dral, 7));
                } else {
                    expected.log.push_back("Null Dral Handle, No Messages can be send");
                }
                expectEvent(job, To::dral, 1135, expected);
            });
        }
    }
}

// A refused open leaves the flag clear, so that the close isn't sent and lets DRAL go; the next
// event searches again.
TEST(DralsLostWindow, AfterARefusedJob) {
    LostJob job(os::win7);
    Window& window = job.system.desktop.add("any class", hiddenName, {0});
    EXPECT_EQ(job.tellDral(SM_OPENJOB), 0);
    EXPECT_EQ(job.record.hDRAL, window.handle);
    EXPECT_EQ(job.tellDral(SM_CLOSEJOB), 1);
    EXPECT_EQ(job.record.hDRAL, nullptr);
    EXPECT_EQ(window.received.size(), 1u);
    EXPECT_EQ(job.tellDral(SM_OPENJOB), 0);
    EXPECT_EQ(job.record.hDRAL, window.handle);
}

}  // namespace
}  // namespace vok::test
