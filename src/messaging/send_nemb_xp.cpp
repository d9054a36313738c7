#include <cstring>
#include <string>

#include "launch/printer_lookup.h"
#include "logging/log_line.h"
#include "messaging/send_nemb.h"
#include "support/text.h"

namespace vok {

namespace {

// Milliseconds that a NEMB which is still starting is given.
constexpr DWORD startUpWait = 60000;

void logHandle(const char* text, const VKDATA& record) {
    logLine({text, toString(record.hNEMB)});
}

std::string printerNameOf(const EventBlock* block) {
    if (block == nullptr) {
        return {};
    }
    const char* name = static_cast<const char*>(block);
    return {name, strnlen(name, VOK_NEMB_BLOCK_SIZE)};
}

// Looks for NEMB's window, once more after its start-up where its process is known.
void findWindow(const EventBlock* block, VKDATA& record) {
    logLine("Null Window Handle in SendNembMsg");
    NameBuffer className;
    std::string title;
    GetNembWindowNames(printerNameOf(block).c_str(), &className, &title);
    record.hNEMB = FindWindowA(className.text(), title.c_str());
    if (record.hNEMB != nullptr || record.hNEMBProc == nullptr) {
        return;
    }
    logLine("Waiting for nemb to finish initialization (sleeping 1 minute)");
    WaitForInputIdle(record.hNEMBProc, startUpWait);
    logLine("Finished waiting. Attempting FindWindow again");
    record.hNEMB = FindWindowA(className.text(), title.c_str());
}

Reply send(const EventBlock* block, DWORD messageId, const VKDATA& record) {
    return sendCopyData(record.hNEMB, messageId, block, VOK_NEMB_BLOCK_SIZE);
}

Reply sendAndLog(const EventBlock* block, DWORD messageId, const VKDATA& record, const char* text) {
    const Reply reply = send(block, messageId, record);
    logLine({text, ReplyText(reply)});
    return reply;
}

Reply writeAndLog(const EventBlock* block, DWORD messageId, const VKDATA& record,
                  const char* text) {
    const Reply reply = WriteNembPipe(record.hNEMB, block, messageId);
    logLine({text, ReplyText(reply)});
    return reply;
}

Reply openByWindow(const EventBlock* block, const VKDATA& record) {
    logHandle("SM_OPENJOB. Nemb HWND = ", record);
    if (!isJobOpen(record)) {
        return flagInWrongState();
    }
    return sendAndLog(block, SM_OPENJOB, record, "OPENJOB SendMessage rc = ");
}

Reply closeByWindow(const EventBlock* block, const VKDATA& record) {
    logHandle("SM_CLOSEJOB. Nemb HWND = ", record);
    if (!isJobOpen(record)) {
        return flagInWrongState();
    }
    const Reply reply = send(block, SM_CLOSEJOB, record);
    const DWORD endTime = GetTickCount();
    logLine({"CLOSEJOB SendMessage rc = ", ReplyText(reply),
             " - Root Session EndJobTime=", toString(endTime, 10)});
    return reply;
}

Reply cancelByWindow(const EventBlock* block, const VKDATA& record) {
    logHandle("SM_CANCELJOB. Nemb HWND = ", record);
    return sendAndLog(block, SM_CANCELJOB, record, "CANCELJOB SendMessage rc = ");
}

Reply pageByWindow(const EventBlock* block, DWORD messageId, const VKDATA& record) {
    const Reply reply = send(block, messageId, record);
    logHandle("SM_STARTPAGE/ENDPAGE. Nemb HWND = ", record);
    logLine({"STARTPAGE/ENDPAGE SendMessage rc = ", ReplyText(reply)});
    return reply;
}

Reply sendByWindow(const EventBlock* block, DWORD messageId, VKDATA& record) {
    if (record.hNEMB == nullptr) {
        findWindow(block, record);
    }
    if (record.hNEMB == nullptr) {
        logLine("Null Nemb Window Handle");
        return NOPRINT;
    }
    switch (messageId) {
        case SM_OPENJOB:
            return openByWindow(block, record);
        case SM_CLOSEJOB:
            return closeByWindow(block, record);
        case SM_CANCELJOB:
            return cancelByWindow(block, record);
        default:
            return pageByWindow(block, messageId, record);
    }
}

// The only pipe event whose reply reaches the print processor.
Reply openByPipe(const EventBlock* block, const VKDATA& record) {
    logHandle("SM_OPENJOB. Nemb HPIPE = ", record);
    if (!isJobOpen(record)) {
        return flagInWrongState();
    }
    if (!connectPipe(record.hNEMB)) {
        return YESPRINT;
    }
    return writeAndLog(block, SM_OPENJOB, record, "OPENJOB WriteNembPipe rc = ");
}

Reply closeByPipe(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CLOSEJOB. Nemb HPIPE = ", record);
    if (!isJobOpen(record)) {
        logLine("OPENJOB flag was NOT set in epDoc");
        ClosePipe(&record.hNEMB);
        logLine("Close PIPE. rc = YESPRINT");
        return YESPRINT;
    }
    clearJobOpen(record);
    writeAndLog(block, SM_CLOSEJOB, record, "CLOSEJOB WriteNembPipe rc = ");
    ClosePipe(&record.hNEMB);
    const DWORD endTime = GetTickCount();
    logLine({"Close PIPE", "Non Root Session - EndJobTime=", toString(endTime, 10)});
    return YESPRINT;
}

Reply cancelByPipe(const EventBlock* block, VKDATA& record) {
    logHandle("SM_CANCELJOB. Nemb HPIPE = ", record);
    writeAndLog(block, SM_CANCELJOB, record, "CANCELJOB WriteNembPipe rc = ");
    ClosePipe(&record.hNEMB);
    logLine("Close PIPE. rc = TRUE");
    return YESPRINT;
}

Reply pageByPipe(const EventBlock* block, DWORD messageId, const VKDATA& record) {
    const Reply reply = WriteNembPipe(record.hNEMB, block, messageId);
    logHandle("SM_STARTPAGE/ENDPAGE. Nemb HPIPE = ", record);
    logLine({"STARTPAGE/ENDPAGE WriteNembPipe rc = ", ReplyText(reply)});
    return YESPRINT;
}

Reply invalidRecordOrPipe() {
    logLine("Invalid VokData or Nemb Pipe Handle. rc = YESPRINT");
    return YESPRINT;
}

Reply sendByPipe(const EventBlock* block, DWORD messageId, VKDATA& record) {
    if (record.hNEMB == nullptr) {
        return invalidRecordOrPipe();
    }
    switch (messageId) {
        case SM_OPENJOB:
            return openByPipe(block, record);
        case SM_CLOSEJOB:
            return closeByPipe(block, record);
        case SM_CANCELJOB:
            return cancelByPipe(block, record);
        default:
            return pageByPipe(block, messageId, record);
    }
}

}  // namespace

Reply SendNEMBMsgXP(const EventBlock* block, DWORD messageId, VKDATA* record) {
    traceEvent("SendNEMBMsgXP");
    if (record == nullptr) {
        return invalidRecordOrPipe();
    }
    return record->nembMode == VOK_MODE_PIPE ? sendByPipe(block, messageId, *record)
                                             : sendByWindow(block, messageId, *record);
}

}  // namespace vok
