// VOKSendNembMsg by window messages: on NT, and on the 9x family, which knows no other way.
#include <gtest/gtest.h>

#include <string>

#include "dll/event_case.h"

namespace vok::test {
namespace {

const std::string flagText = "OPENJOB flag was NOT set in epDoc. rc = YESPRINT";

std::string replyLine(const std::string& event, const WindowCase& one) {
    return event + " SendMessage rc = " + one.reply.text;
}

// The outcome of an event that is sent.
Outcome sentOutcome(const WindowCase& one, DWORD id, const Lines& log) {
    return {one.reply.result,
            one.epDoc,
            one.window.handle,
            log,
            {sentTo(one.window.handle, id, To::nemb, one.reply.word)}};
}

// Of one that the flag holds back.
Outcome heldBack(const WindowCase& one, const std::string& begin) {
    return {1, one.epDoc, one.window.handle, {begin, flagText}, {}};
}

TEST(NembByWindow, OpenJob) {
    onEachWindowCase(os::allNt, To::nemb, [](const WindowCase& one) {
        const std::string begin = "SM_OPENJOB. Nemb HWND = " + logText(one.window.handle);
        expectEvent(one.job, To::nemb, 1125,
                    isOpen(one.epDoc) ? sentOutcome(one, 1125, {begin, replyLine("OPENJOB", one)})
                                      : heldBack(one, begin));
        if (isOpen(one.epDoc)) {
            EXPECT_EQ(one.window.received.at(0).data, one.job.nembBlock.bytes());
        }
    });
}

// The time is that of NEMB's answer.
TEST(NembByWindow, CloseJob) {
    onEachWindowCase(os::allNt, To::nemb, [](const WindowCase& one) {
        const std::string begin = "SM_CLOSEJOB. Nemb HWND = " + logText(one.window.handle);
        if (!isOpen(one.epDoc)) {
            expectEvent(one.job, To::nemb, 1127, heldBack(one, begin));
            return;
        }
        one.job.system.clock.setTick(4000000000);
        one.window.reply = [&](const Message&) {
            one.job.system.clock.advance(25);
            return one.reply.word;
        };
        Outcome expected = sentOutcome(
            one, 1127,
            {begin, replyLine("CLOSEJOB", one) + " - Root Session EndJobTime=4000000025"});
        expected.milliseconds = 25;
        expectEvent(one.job, To::nemb, 1127, expected);
    });
}

TEST(NembByWindow, CancelJob) {
    onEachWindowCase(os::allNt, To::nemb, [](const WindowCase& one) {
        const std::string begin = "SM_CANCELJOB. Nemb HWND = " + logText(one.window.handle);
        expectEvent(one.job, To::nemb, 1137,
                    sentOutcome(one, 1137, {begin, replyLine("CANCELJOB", one)}));
    });
}

TEST(NembByWindow, AnyOtherEventIsAPages) {
    for (const DWORD id : {0u, 1130u, 1135u, 1136u, 0xFFFFFFFFu}) {
        onEachWindowCase(os::allNt, To::nemb, [id](const WindowCase& one) {
            expectEvent(
                one.job, To::nemb, id,
                sentOutcome(one, id,
                            {"SM_STARTPAGE/ENDPAGE. Nemb HWND = " + logText(one.window.handle),
                             replyLine("STARTPAGE/ENDPAGE", one)}));
        });
    }
}

TEST(NembOn9x, OpenAndCloseJob) {
    for (const DWORD id : {1125u, 1127u}) {
        onEachWindowCase(os::all9x, To::nemb, [id](const WindowCase& one) {
            const std::string event = id == 1125 ? "OPENJOB" : "CLOSEJOB";
            expectEvent(one.job, To::nemb, id,
                        isOpen(one.epDoc)
                            ? sentOutcome(one, id, {"SM_" + event, replyLine(event, one)})
                            : heldBack(one, "SM_" + event));
        });
    }
}

TEST(NembOn9x, CancelJob) {
    onEachWindowCase(os::all9x, To::nemb, [](const WindowCase& one) {
        expectEvent(one.job, To::nemb, 1137,
                    sentOutcome(one, 1137, {"SM_CANCELJOB", replyLine("CANCELJOB", one)}));
        EXPECT_EQ(one.window.received.at(0).data, one.job.nembBlock.bytes());
    });
}

TEST(NembOn9x, AnyOtherEventIsAPages) {
    for (const DWORD id : {0u, 1130u, 1135u, 1136u, 0xFFFFFFFFu}) {
        onEachWindowCase(os::all9x, To::nemb, [id](const WindowCase& one) {
            expectEvent(one.job, To::nemb, id,
                        sentOutcome(one, id, {replyLine("SM_STARTPAGE/ENDPAGE default.", one)}));
        });
    }
}

// There is no search, no wait, and no pipe, whatever the record says.
TEST(NembOn9x, NoHandle) {
    onEach(os::all9x, [](Job& job) {
        job.record.hNEMBProc = job.system.processes.open();
        job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
        for (const DWORD mode : {0u, 1u, 2u}) {
            job.record.nembMode = mode;
            for (const DWORD id : {1125u, 1127u, 1135u, 1137u}) {
                expectEvent(job, To::nemb, id,
                            {1, 0, nullptr, {"VokData is Null. rc = YESPRINT"}, {}});
            }
        }
    });
}

TEST(NembOn9x, PipeModeIsNotLookedAt) {
    Job job(os::win95);
    job.record.hNEMB = job.system.desktop.add("any", "any", {7}).handle;
    job.record.nembMode = VOK_MODE_PIPE;
    EXPECT_EQ(job.tellNemb(SM_CANCELJOB), 7);
}

const std::string noHandle = "Null Window Handle in SendNembMsg";
const std::string noWindow = "Null Nemb Window Handle";
const std::string search = R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = )";
const std::string nothing = "null (error 2)";

// The names are asked of the printer that the block begins with; its handle is left open.
Lines asksForNames(int printer) {
    const std::string handle = "printer#" + std::to_string(printer);
    return {
        R"(OpenPrinterA("Office", out, null) = 1 -> )" + handle,
        "GetPrinterDataA(" + handle + R"(, "Printer Prefix", null, out, 260, out) = 0 -> "DEMO")"};
}

TEST(NembsLostWindow, FoundAndKept) {
    onEach(os::allNt, [](Job& job) {
        const Window& window = job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office", {2});
        const std::string sent = sentTo(window.handle, 1137, To::nemb, 2);
        const Lines log = {"SM_CANCELJOB. Nemb HWND = " + logText(window.handle),
                           "CANCELJOB SendMessage rc = WAITPRINT"};
        expectEvent(job, To::nemb, 1137,
                    {2, 0, window.handle, Lines{noHandle} + log,
                     asksForNames(1) + Lines{search + handleName(window.handle), sent}});
        expectEvent(job, To::nemb, 1137, {2, 0, window.handle, log, {sent}});
        job.expectNothingOpenBut({"printer#1"});
    });
}

TEST(NembsLostWindow, NotThereAndNoProcessToWaitFor) {
    onEach(os::allNt, [](Job& job) {
        int searches = 0;
        for (const DWORD id : {1125u, 1127u, 1135u, 1137u}) {
            expectEvent(job, To::nemb, id,
                        {0,
                         0,
                         nullptr,
                         {noHandle, noWindow},
                         asksForNames(++searches) + Lines{search + nothing}});
        }
        EXPECT_EQ(job.system.handles.countOpen(Kind::printer), 4u);
    });
}

// The wait's result isn't looked at.
TEST(NembsLostWindow, AppearsAfterTheWait) {
    for (const DWORD result : {0ul, 258ul, 0xFFFFFFFFul}) {
        for (const bool appears : {true, false}) {
            onEach(os::allNt, [&](Job& job) {
                job.record.hNEMBProc = job.system.processes.open();
                job.system.processes.idleResult = result;
                job.system.processes.idleMilliseconds = 500000;
                job.system.processes.whileIdleWait = [&] {
                    if (appears) {
                        job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office", {7});
                    }
                };
                Outcome expected;
                expected.milliseconds = 60000;
                expected.log = {noHandle,
                                "Waiting for nemb to finish initialization (sleeping 1 minute)",
                                "Finished waiting. Attempting FindWindow again"};
                const std::string waited =
                    result == 0xFFFFFFFF ? "4294967295 (error 6)" : std::to_string(result);
                expected.calls =
                    asksForNames(1) + Lines{search + nothing,
                                            "WaitForInputIdle(process#1, 60000) = " + waited,
                                            search + (appears ? "window#1" : nothing)};
                if (appears) {
                    expected.result = 7;
                    expected.handle = handleOf(Kind::window, 1);
                    expected.log = expected.log +
                                   Lines{"SM_CANCELJOB. Nemb HWND = " + logText(expected.handle),
                                         "CANCELJOB SendMessage rc = 7"};
                    expected.calls.push_back(sentTo(expected.handle, 1137, To::nemb, 7));
                } else {
                    expected.log.push_back(noWindow);
                }
                expectEvent(job, To::nemb, 1137, expected);
            });
        }
    }
}

// The searches are made all the same, for nothing.
TEST(NembsLostWindow, NamesThatCannotBeHad) {
    for (const char* function : {"OpenPrinterA", "GetPrinterDataA"}) {
        SCOPED_TRACE(function);
        Job job(os::winXp);
        job.system.faults.fail(function);
        EXPECT_EQ(job.tellNemb(SM_CANCELJOB), 0);
        expectCallsOf(job.system, "FindWindowA", {R"(FindWindowA("", "") = null (error 2))"});
    }
}

}  // namespace
}  // namespace vok::test
