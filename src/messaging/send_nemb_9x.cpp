#include "logging/log_line.h"
#include "messaging/send_nemb.h"

namespace vok {

namespace {

Reply sendAndLog(const EventBlock* block, DWORD messageId, const VKDATA& record, const char* text) {
    const Reply reply = sendCopyData(record.hNEMB, messageId, block, VOK_NEMB_BLOCK_SIZE);
    logLine({text, ReplyText(reply)});
    return reply;
}

Reply sendIfOpened(const EventBlock* block, DWORD messageId, const VKDATA& record,
                   const char* text) {
    return isJobOpen(record) ? sendAndLog(block, messageId, record, text) : flagInWrongState();
}

}  // namespace

Reply SendNEMBMsg9X(const EventBlock* block, DWORD messageId, VKDATA* record) {
    traceEvent("SendNEMBMsg9X");
    if (record == nullptr || record->hNEMB == nullptr) {
        logLine("VokData is Null. rc = YESPRINT");
        return YESPRINT;
    }
    switch (messageId) {
        case SM_OPENJOB:
            logLine("SM_OPENJOB");
            return sendIfOpened(block, messageId, *record, "OPENJOB SendMessage rc = ");
        case SM_CLOSEJOB:
            logLine("SM_CLOSEJOB");
            return sendIfOpened(block, messageId, *record, "CLOSEJOB SendMessage rc = ");
        case SM_CANCELJOB:
            logLine("SM_CANCELJOB");
            return sendAndLog(block, messageId, *record, "CANCELJOB SendMessage rc = ");
        default:
            return sendAndLog(block, messageId, *record,
                              "SM_STARTPAGE/ENDPAGE default. SendMessage rc = ");
    }
}

}  // namespace vok
