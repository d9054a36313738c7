// VOKSendMsgEx: arbitrary messages, posted or written.
#include <gtest/gtest.h>

#include <string>

#include "dll/job_fixture.h"

namespace vok::test {
namespace {

constexpr const char* payload = "A23456789";  // ten bytes with its NUL
const BYTE* const payloadBytes = reinterpret_cast<const BYTE*>(payload);

struct Send {
    const char* name = "Office";
    HANDLE companion = nullptr;
    DWORD viaPipe = 0;
    DWORD messageId = 1125;
    const BYTE* data = payloadBytes;
    DWORD length = 10;
};

DWORD send(Job& job, const Send& given) {
    return job.library.sendMsgEx(given.name, given.companion, given.viaPipe, given.messageId,
                                 given.data, given.length);
}

// The one line that every call writes, its handle as the low 32 bits.
Lines sendLines(const Send& given, const std::string& firstByte) {
    const auto low = static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(given.companion));
    const std::string name = given.name ? given.name : "";
    return traceOf("VOKSendMsgEx") + traceOf("sendMsgEx") +
           Lines{"FN=" + name + " hXfile=" + std::to_string(low) + " viaPipe=" +
                 std::to_string(given.viaPipe) + " dwMsg=" + std::to_string(given.messageId) +
                 " data=" + firstByte + " length=" + std::to_string(given.length)};
}

TEST(SendMsgEx, PostsTheFirstByteOnEverySystem) {
    onEach(os::all, [](Job& job) {
        for (const DWORD viaPipe : {0u, 2u, 0xFFFFFFFFu}) {
            SCOPED_TRACE(viaPipe);
            Window& window = job.system.desktop.add("any", "any");
            const Send given{.companion = window.handle, .viaPipe = viaPipe};
            job.system.calls.clear();
            EXPECT_EQ(send(job, given), 1u);
            job.expectNewLines(sendLines(given, "65"));
            EXPECT_EQ(callLines(job.system),
                      Lines{"PostMessageA(" + handleName(window.handle) + ", 1125, 0, 65) = 1"});
            EXPECT_EQ(window.received.at(0).lParam, 65);
            EXPECT_TRUE(window.received.at(0).posted);
        }
    });
}

TEST(SendMsgEx, BytesAreNotSigned) {
    Job job(os::winXp);
    Window& window = job.system.desktop.add("any", "any");
    const BYTE byte = 0xFF;
    const Send given{
        .companion = window.handle, .messageId = 0xFFFFFFFF, .data = &byte, .length = 1};
    EXPECT_EQ(send(job, given), 1u);
    job.expectNewLines(sendLines(given, "255"));
    EXPECT_EQ(window.received.at(0).lParam, 255);
}

TEST(SendMsgEx, PostThatFails) {
    Job job(os::win7);
    const Send given{.companion = handleOf(Kind::window, 9)};
    EXPECT_EQ(send(job, given), 0u);
    job.expectNewLines(sendLines(given, "65"));
}

TEST(SendMsgEx, WritesIntoAPipeThatIsConnected) {
    onEach(os::allNt, [](Job& job) {
        const HANDLE pipe = job.system.pipes.open("pipe");
        const Send given{.companion = pipe, .viaPipe = 1, .messageId = 0x01020304};
        job.system.calls.clear();
        EXPECT_EQ(send(job, given), 1u);
        job.expectNewLines(sendLines(given, "65"));
        EXPECT_EQ(callLines(job.system),
                  (Lines{"ConnectNamedPipe(pipe#1, null) = 0 (error 535)",
                         "WriteFile(pipe#1, bytes[4] 04 03 02 01, 4, out, null) = 1",
                         "WriteFile(pipe#1, bytes[10] 41 32 33 34, 10, out, null) = 1"}));
        EXPECT_EQ(job.system.pipes.last("pipe").writes.at(1), std::string(payload, 10));
    });
}

// A client that came before the connect counts as connected, one that comes by it doesn't.
TEST(SendMsgEx, PipeThatConnectsOnlyNow) {
    const struct {
        PipeClient::Comes comes;
        DWORD error;
        DWORD result;
    } cases[] = {{PipeClient::Comes::beforeWaiting, 0, 1},
                 {PipeClient::Comes::whileWaiting, 0, 0},
                 {PipeClient::Comes::whileWaiting, ERROR_NO_DATA, 0},
                 {PipeClient::Comes::whileWaiting, ERROR_INVALID_HANDLE, 0}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.error);
        Job job(os::winXp);
        PipeClient client;
        client.comes = one.comes;
        client.connectError = one.error;
        const Send given{.companion = job.system.pipes.open("pipe", client, false), .viaPipe = 1};
        EXPECT_EQ(send(job, given), one.result);
        job.expectNewLines(sendLines(given, "65"));
        EXPECT_EQ(job.system.pipes.last("pipe").writes.size(), one.result == 1 ? 2u : 0u);
        job.expectNothingOpenBut({"pipe#1"});
    }
}

// The result is that of the payload's write alone.
TEST(SendMsgEx, WriteThatFails) {
    for (const size_t n : {1u, 2u}) {
        Job job(os::winXp, Log::off);
        const Send given{.companion = job.system.pipes.open("pipe"), .viaPipe = 1};
        job.system.faults.fail("WriteFile", 2, n);
        EXPECT_EQ(send(job, given), n == 1 ? 1u : 0u);
        EXPECT_EQ(job.system.calls.count("WriteFile"), 2u);
    }
}

TEST(SendMsgEx, NullHandleOrNoBytesAreRefused) {
    onEach(os::all, [](Job& job) {
        const HANDLE window = job.system.desktop.add("any", "any").handle;
        const HANDLE pipe = job.system.pipes.open("pipe");
        const Send refused[] = {{.companion = nullptr},
                                {.companion = nullptr, .viaPipe = 1},
                                {.companion = window, .length = 0},
                                {.companion = pipe, .viaPipe = 1, .length = 0}};
        for (const Send& given : refused) {
            job.system.calls.clear();
            EXPECT_EQ(send(job, given), 0u);
            job.expectNewLines(sendLines(given, "65") + Lines{"Invalid input"});
            EXPECT_EQ(callLines(job.system), Lines());
        }
    });
}

TEST(SendMsgEx, TextsAndBytesOfAnyKind) {
    Job job(os::winXp);
    const HANDLE window = job.system.desktop.add("any", "any").handle;
    const std::string longName(1000, 'n');
    for (const char* name : {static_cast<const char*>(nullptr), "", longName.c_str()}) {
        const Send given{.name = name, .companion = window};
        EXPECT_EQ(send(job, given), 1u);
        job.expectNewLines(sendLines(given, "65"));
    }
    const Send nothing{.companion = window, .data = nullptr, .length = 0};
    EXPECT_EQ(send(job, nothing), 0u);
    job.expectNewLines(sendLines(nothing, "0") + Lines{"Invalid input"});
}

// One byte in front of a page that can't be read: no more of it is read for a window.
TEST(SendMsgEx, ReadsOneByteForAWindow) {
    Job job(os::winXp);
    const GuardedBytes byte("A", 1, GuardedBytes::Use::readOnly);
    const HANDLE window = job.system.desktop.add("any", "any").handle;
    EXPECT_EQ(
        send(job,
             {.companion = window, .data = static_cast<const BYTE*>(byte.data()), .length = 1000}),
        1u);
}

// Without a logger the trace fails, and the sender asks for the text of that failure.
TEST(SendMsgEx, DoesNotAskForTheVersion) {
    Job job(os::win98, Log::off);
    send(job, {.companion = job.system.desktop.add("any", "any").handle});
    job.expectNewCalls({"FormatMessageA(0x1200, null, 1, 0x409, out, 256) = 0 (error 317)",
                        "PostMessageA(window#1, 1125, 0, 65) = 1"});
}

}  // namespace
}  // namespace vok::test
