#include "logging/log_line.h"
#include "messaging/send_dral.h"
#include "support/text.h"

namespace vok {

namespace {

// Milliseconds between two of DRAL's WAITPRINT answers.
constexpr DWORD pause = 1000;

struct WaitTexts {
    const char* loop;
    const char* reply;
    const char* wait;
};

constexpr WaitTexts closeTexts = {"Inside CLOSE JOB loop", "CLOSEJOB SendMessage rc = ",
                                  "CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000"};
constexpr WaitTexts cancelTexts = {"Inside CANCEL JOB loop", "CANCELJOB SendMessage rc = ",
                                   "CANCELJOB SendMessage equals WAITPRINT. Sleep 1000"};

Reply sendAndLog(const EventBlock* block, DWORD messageId, const VKDATA& record, const char* text) {
    const Reply reply = sendCopyData(record.hDRAL, messageId, block, VOK_DRAL_BLOCK_SIZE);
    logLine({text, ReplyText(reply)});
    return reply;
}

// Asks for as long as DRAL wants to be waited for, without a bound.
Reply sendUntilDone(const EventBlock* block, DWORD messageId, VKDATA& record,
                    const WaitTexts& texts) {
    for (;;) {
        logLine(texts.loop);
        const Reply reply = sendAndLog(block, messageId, record, texts.reply);
        if (reply != WAITPRINT) {
            record.hDRAL = nullptr;
            return reply;
        }
        logLine(texts.wait);
        Sleep(pause);
    }
}

Reply openJob(const EventBlock* block, VKDATA& record) {
    logLine("SM_OPENJOB");
    if (isJobOpen(record)) {
        logLine("Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT");
        return YESPRINT;
    }
    const Reply reply = sendAndLog(block, SM_OPENJOB, record, "OPENJOB SendMessage rc = ");
    if (reply == YESPRINT) {
        setJobOpen(record);
    }
    return reply;
}

Reply closeJob(const EventBlock* block, VKDATA& record) {
    logLine("SM_CLOSEJOB");
    if (!isJobOpen(record)) {
        flagInWrongState();
        record.hDRAL = nullptr;
        return YESPRINT;
    }
    clearJobOpen(record);
    return sendUntilDone(block, SM_CLOSEJOB, record, closeTexts);
}

}  // namespace

Reply SendDRALMsg9X(const EventBlock* block, DWORD messageId, VKDATA* record) {
    traceEvent("SendDRALMsg9X");
    if (record == nullptr || record->hDRAL == nullptr) {
        logLine("VokData is Null. rc = YESPRINT");
        return YESPRINT;
    }
    switch (messageId) {
        case SM_OPENJOB:
            return openJob(block, *record);
        case SM_CLOSEJOB:
            return closeJob(block, *record);
        case SM_STARTPAGE:
            logLine("SM_STARTPAGE");
            return sendAndLog(block, messageId, *record, "STARTPAGE SendMessage rc = ");
        case SM_CANCELJOB:
            logLine("SM_CANCELJOB");
            return sendUntilDone(block, messageId, *record, cancelTexts);
        default:
            logLine({"The Message Id = ", toString(messageId, 10)});
            logLine("Default. WARNING! We Should not be here. rc = YESPRINT");
            return YESPRINT;
    }
}

}  // namespace vok
