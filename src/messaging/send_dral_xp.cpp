#include "launch/hidden_window.h"
#include "logging/log_line.h"
#include "messaging/send_dral.h"
#include "support/text.h"

namespace vok {

namespace {

// Milliseconds that a DRAL which is still starting is given.
constexpr DWORD startUpWait = 120000;
// Milliseconds that every close and cancel takes.
constexpr DWORD pause = 1000;

void logHandle(const char* text, const VKDATA& record) {
    logLine({text, toString(record.hDRAL)});
}

void logUnknownIdentifier(DWORD messageId, const char* warning) {
    logLine({"The Message Id = ", toString(messageId, 10)});
    logLine(warning);
}

void waitForStartUp(HANDLE process) {
    logLine("Waiting for Dral to finish initialization. Sleeping");
    switch (WaitForInputIdle(process, startUpWait)) {
        case WAIT_TIMEOUT:
            logLine("Wait timed out while waiting for Dral initialization to complete");
            break;
        case WAIT_FAILED:
            logLine("Wait failed while waiting for Dral initialization to complete");
            break;
        default:
            break;
    }
    logLine("Finished waiting. Attempting FindWindow again...");
}

// Looks for DRAL's hidden window, once more after its start-up where its process is known.
void findWindow(VKDATA& record) {
    logLine("Null Window Handle in SendDralMsgXP");
    const NameBuffer title = hiddenWindowName(record);
    record.hDRAL = FindWindowA(nullptr, title.text());
    if (record.hDRAL != nullptr || record.hDRALProc == nullptr) {
        return;
    }
    waitForStartUp(record.hDRALProc);
    record.hDRAL = FindWindowA(nullptr, title.text());
}

Reply sendAndLog(const EventBlock* block, DWORD messageId, const VKDATA& record, const char* text) {
    const Reply reply = sendCopyData(record.hDRAL, messageId, block, VOK_DRAL_BLOCK_SIZE);
    logLine({text, ReplyText(reply)});
    return reply;
}

Reply writeAndLog(const EventBlock* block, const VKDATA& record, const char* text) {
    const Reply reply = WriteDralPipe(record.hDRAL, block);
    logLine({text, ReplyText(reply)});
    return reply;
}

Reply sleepAfter(Reply reply, const char* text) {
    logLine(text);
    Sleep(pause);
    return reply;
}

Reply openByWindow(const EventBlock* block, VKDATA& record) {
    logHandle("SM_OPENJOB. Dral HWND = ", record);
    if (isJobOpen(record)) {
        return flagInWrongState();
    }
    const Reply reply = sendAndLog(block, SM_OPENJOB, record, "OPENJOB SendMessage rc = ");
    if (reply == YESPRINT) {
        setJobOpen(record);
    }
    return reply;
}

// The end of a close or cancel: DRAL's window is searched again for the next job unless DRAL wants
// this event once more.
Reply endByWindow(Reply reply, VKDATA& record, const char* resetText) {
    if (reply != WAITPRINT) {
        logLine(resetText);
        record.hDRAL = nullptr;
    }
    return sleepAfter(reply, "Sleep 1000");
}

Reply closeByWindow(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CLOSEJOB. Dral HWND = ", record);
    if (!isJobOpen(record)) {
        flagInWrongState();
        record.hDRAL = nullptr;
        return YESPRINT;
    }
    const Reply reply = sendAndLog(block, SM_CLOSEJOB, record, "CLOSEJOB SendMessage rc = ");
    return endByWindow(reply, record,
                       "Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB");
}

Reply cancelByWindow(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CANCELJOB. Dral HWND = ", record);
    const Reply reply = sendAndLog(block, SM_CANCELJOB, record, "CANCELJOB SendMessage rc = ");
    return endByWindow(reply, record,
                       "Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB");
}

Reply sendByWindow(const EventBlock* block, DWORD messageId, VKDATA& record) {
    if (record.hDRAL == nullptr) {
        findWindow(record);
    }
    if (record.hDRAL == nullptr) {
        logLine("Null Dral Handle, No Messages can be send");
        return NOPRINT;
    }
    switch (messageId) {
        case SM_OPENJOB:
            return openByWindow(block, record);
        case SM_CLOSEJOB:
            return closeByWindow(block, record);
        case SM_STARTPAGE:
            return sendAndLog(block, messageId, record, "STARTPAGE SendMessage rc = ");
        case SM_CANCELJOB:
            return cancelByWindow(block, record);
        default:
            logUnknownIdentifier(messageId,
                                 "Default. WARNING! We should not be here. rc = YESPRINT");
            return YESPRINT;
    }
}

// The attempt alone opens the job towards NEMB, whatever DRAL answers.
Reply openByPipe(const EventBlock* block, VKDATA& record) {
    logHandle("SM_OPENJOB. Dral HPIPE = ", record);
    if (isJobOpen(record)) {
        return flagInWrongState();
    }
    setJobOpen(record);
    if (!connectPipe(record.hDRAL)) {
        return YESPRINT;
    }
    return writeAndLog(block, record, "OPENJOB WriteDralPipe. rc = ");
}

bool connectOrClose(VKDATA& record) {
    if (connectPipe(record.hDRAL)) {
        return true;
    }
    ClosePipe(&record.hDRAL);
    return false;
}

Reply closeByPipe(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CLOSEJOB. Dral HPIPE = ", record);
    if (!connectOrClose(record)) {
        return YESPRINT;
    }
    if (!isJobOpen(record)) {
        logLine("OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT");
        ClosePipe(&record.hDRAL);
        return YESPRINT;
    }
    const Reply reply = writeAndLog(block, record, "CLOSEJOB WriteDralPipe rc = ");
    if (reply != WAITPRINT) {
        logLine("We did not get WAITPRINT in CLOSEJOB...Close PIPE");
        ClosePipe(&record.hDRAL);
    }
    return sleepAfter(reply, "Sleep 1000 ");
}

Reply startPageByPipe(const EventBlock* block, const VKDATA& record) {
    logHandle("SM_STARTPAGE. Dral HPIPE = ", record);
    return writeAndLog(block, record, "STARTPAGE WriteDralPipe. rc = ");
}

// Unlike a close, a cancel that ends the pipe clears the flag.
Reply cancelByPipe(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CANCELJOB. Dral HPIPE = ", record);
    if (!connectOrClose(record)) {
        return YESPRINT;
    }
    const Reply reply = writeAndLog(block, record, "CANCELJOB WriteDralPipe. rc = ");
    if (reply != WAITPRINT) {
        logLine("We did not get WAITPRINT in CANCELJOB...Close PIPE");
        clearJobOpen(record);
        ClosePipe(&record.hDRAL);
    }
    return sleepAfter(reply, "Sleep 1000 ");
}

Reply invalidRecordOrPipe() {
    logLine("Invalid VokData or Pipe Handle ");
    return YESPRINT;
}

Reply sendByPipe(const EventBlock* block, DWORD messageId, VKDATA& record) {
    if (record.hDRAL == nullptr) {
        return invalidRecordOrPipe();
    }
    switch (messageId) {
        case SM_OPENJOB:
            return openByPipe(block, record);
        case SM_CLOSEJOB:
            return closeByPipe(block, record);
        case SM_STARTPAGE:
            return startPageByPipe(block, record);
        case SM_CANCELJOB:
            return cancelByPipe(block, record);
        default:
            logUnknownIdentifier(messageId,
                                 "Default. WARNING! We should not be here. rc = YESPRINT ");
            return YESPRINT;
    }
}

}  // namespace

Reply SendDRALMsgXP(const EventBlock* block, DWORD messageId, VKDATA* record) {
    traceEvent("SendDRALMsgXP");
    if (record == nullptr) {
        return invalidRecordOrPipe();
    }
    return record->dralMode == VOK_MODE_PIPE ? sendByPipe(block, messageId, *record)
                                             : sendByWindow(block, messageId, *record);
}

}  // namespace vok
