// One event of a job, and what is to come of it.
#pragma once
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "dll/job_fixture.h"

namespace vok::test {

enum class To { dral, nemb };

struct Outcome {
    LONG result = 0;
    DWORD epDoc = 0;
    HANDLE handle = nullptr;  // the companion's, in the record
    Lines log;                // behind the traces
    Lines calls;              // behind the question for the version
    ULONGLONG milliseconds = 0;
};

// A reply of a companion's window.
struct WindowReply {
    LRESULT word;
    const char* text;
    LONG result;
    bool isYes() const { return word == YESPRINT; }
    bool isWait() const { return word == WAITPRINT; }
};
inline constexpr LRESULT beyond32Bits = LRESULT{1} << 32;
inline constexpr std::array windowReplies{WindowReply{0, "NOPRINT", 0},
                                          WindowReply{1, "YESPRINT", 1},
                                          WindowReply{2, "WAITPRINT", 2},
                                          WindowReply{7, "7", 7},
                                          WindowReply{1314, "1314", 1314},
                                          WindowReply{-1, "-1", -1},
                                          WindowReply{beyond32Bits, "NOPRINT", 0},
                                          WindowReply{beyond32Bits + 1, "YESPRINT", 1},
                                          WindowReply{beyond32Bits + 2, "WAITPRINT", 2}};

// An answer on a pipe, whole, cut short or missing. What is missing of it the companion's own
// default fills: YESPRINT for NEMB, NOPRINT for DRAL.
struct PipeAnswer {
    std::string bytes;
    LONG fromDral;
    LONG fromNemb;
};
std::vector<PipeAnswer> pipeAnswers();
std::string replyText(LONG reply);

// Each without and with the open-job flag.
inline constexpr DWORD flagStates[] = {0, 0x10, 0xFFFFFFEF, 0xFFFFFFFF};
inline bool isOpen(DWORD epDoc) {
    return (epDoc & openJobFlag) != 0;
}

// Sends the event and compares everything with the outcome.
void expectEvent(Job& job, To companion, DWORD messageId, const Outcome& expected);

// A send to a window with the block's first bytes, and its result.
std::string sentTo(const void* window, DWORD messageId, To companion, LRESULT reply);

// Runs the check for every flag state and reply, on each system, with a window of that reply that
// is in the record already.
struct WindowCase {
    Job& job;
    Window& window;
    DWORD epDoc;
    WindowReply reply;
};
template <class Systems>
void onEachWindowCase(const Systems& systems, To companion,
                      const std::function<void(const WindowCase&)>& check) {
    for (const OsRelease& os : systems) {
        Job job(os);
        for (const DWORD epDoc : flagStates) {
            for (const WindowReply& reply : windowReplies) {
                SCOPED_TRACE(std::string(os.name) + ", epDoc " + std::to_string(epDoc) +
                             ", reply " + std::to_string(reply.word));
                Window& window = job.system.desktop.add("any", "any", {reply.word});
                job.record = {};
                job.record.epDoc = epDoc;
                (companion == To::dral ? job.record.hDRAL : job.record.hNEMB) = window.handle;
                check({job, window, epDoc, reply});
            }
        }
    }
}

// DRAL is sent no event that it doesn't know: there is a warning instead.
template <class Systems>
void expectOthersNotSentToDral(const Systems& systems, const std::string& warning) {
    for (const DWORD id : {0u, 1124u, 1126u, 1130u, 1136u, 0xFFFFFFFFu}) {
        onEachWindowCase(systems, To::dral, [&](const WindowCase& one) {
            if (one.reply.word == 7) {
                expectEvent(one.job, To::dral, id,
                            {1,
                             one.epDoc,
                             one.window.handle,
                             {"The Message Id = " + std::to_string(id), warning},
                             {}});
            }
        });
    }
}

// Runs the check for every flag state and answer, with pipes that are connected already or connect
// only now.
struct PipeCase {
    Job& job;
    HANDLE handle;
    PipeData& pipe;
    DWORD epDoc;
    bool isConnected;
    PipeAnswer answer;
    // The calls that the case makes of it.
    std::string connects() const;
    Lines exchanges(To companion, DWORD messageId) const;
    Lines closes() const;
};
void onEachPipeCase(To companion, const std::function<void(const PipeCase&)>& check);

}  // namespace vok::test
