/* The events of a job whose companions are reached, and the generic message. */
#include <string.h>

#include "floor.h"

enum { closePause = 1000 };

static LRESULT sendCopyData(HANDLE window, DWORD messageId, const EventBlock* block, DWORD size) {
    COPYDATASTRUCT data = {messageId, size, (void*)block};
    return SendMessageA((HWND)window, WM_COPYDATA, 0, (LPARAM)&data);
}

static void connectPipe(HANDLE pipe) {
    if (ConnectNamedPipe(pipe, NULL) == 0) {
        GetLastError();
    }
}

static LONG exchangeWithNemb(HANDLE pipe, DWORD messageId, const EventBlock* block) {
    DWORD moved = 0;
    LONG reply = WriteFile(pipe, &messageId, sizeof messageId, &moved, NULL);
    WriteFile(pipe, block, VOK_NEMB_BLOCK_SIZE, &moved, NULL);
    ReadFile(pipe, &reply, sizeof reply, &moved, NULL);
    return reply;
}

static LONG exchangeWithDral(HANDLE pipe, const EventBlock* block) {
    DWORD moved = 0;
    LONG reply = 0;
    WriteFile(pipe, block, VOK_DRAL_BLOCK_SIZE, &moved, NULL);
    ReadFile(pipe, &reply, sizeof reply, &moved, NULL);
    return reply;
}

static void closePipe(HANDLE* pipe) {
    DisconnectNamedPipe(*pipe);
    CloseHandle(*pipe);
    *pipe = NULL;
}

static LRESULT dralByWindow(const EventBlock* block, DWORD messageId, VKDATA* record) {
    const BOOL isPage = messageId == SM_STARTPAGE;
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    if (!isPage) {
        logHandle(isOpen    ? "SM_OPENJOB. Dral HWND = "
                  : isClose ? "SM_CLOSEJOB. Dral HWND = "
                            : "SM_CANCELJOB. Dral HWND = ",
                  record->hDRAL);
    }
    const LRESULT reply = sendCopyData(record->hDRAL, messageId, block, VOK_DRAL_BLOCK_SIZE);
    logReply(isOpen    ? "OPENJOB SendMessage rc = "
             : isClose ? "CLOSEJOB SendMessage rc = "
             : isPage  ? "STARTPAGE SendMessage rc = "
                       : "CANCELJOB SendMessage rc = ",
             reply);
    if (isOpen && reply == YESPRINT) {
        record->epDoc |= VOK_EPDOC_OPENJOB;
    }
    if (isOpen || isPage) {
        return reply;
    }
    if (reply != WAITPRINT) {
        logText(isClose ? "Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB"
                        : "Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB");
        record->hDRAL = NULL;
    }
    logText("Sleep 1000");
    Sleep(closePause);
    return reply;
}

static LRESULT dralByPipe(const EventBlock* block, DWORD messageId, VKDATA* record) {
    const BOOL isPage = messageId == SM_STARTPAGE;
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    logHandle(isOpen    ? "SM_OPENJOB. Dral HPIPE = "
              : isClose ? "SM_CLOSEJOB. Dral HPIPE = "
              : isPage  ? "SM_STARTPAGE. Dral HPIPE = "
                        : "SM_CANCELJOB. Dral HPIPE = ",
              record->hDRAL);
    if (isOpen) {
        record->epDoc |= VOK_EPDOC_OPENJOB;
    }
    if (!isPage) {
        connectPipe(record->hDRAL);
    }
    const LONG reply = exchangeWithDral(record->hDRAL, block);
    logReply(isOpen    ? "OPENJOB WriteDralPipe. rc = "
             : isClose ? "CLOSEJOB WriteDralPipe rc = "
             : isPage  ? "STARTPAGE WriteDralPipe. rc = "
                       : "CANCELJOB WriteDralPipe. rc = ",
             reply);
    if (isOpen || isPage) {
        return reply;
    }
    if (reply != WAITPRINT) {
        logText(isClose ? "We did not get WAITPRINT in CLOSEJOB...Close PIPE"
                        : "We did not get WAITPRINT in CANCELJOB...Close PIPE");
        record->epDoc &= isClose ? ~0UL : ~(DWORD)VOK_EPDOC_OPENJOB;
        closePipe(&record->hDRAL);
    }
    logText("Sleep 1000 ");
    Sleep(closePause);
    return reply;
}

static LRESULT dral9x(const EventBlock* block, DWORD messageId, VKDATA* record) {
    const BOOL isPage = messageId == SM_STARTPAGE;
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    logText(isOpen    ? "SM_OPENJOB"
            : isClose ? "SM_CLOSEJOB"
            : isPage  ? "SM_STARTPAGE"
                      : "SM_CANCELJOB");
    if (isClose) {
        record->epDoc &= ~(DWORD)VOK_EPDOC_OPENJOB;
    }
    if (!isOpen && !isPage) {
        logText(isClose ? "Inside CLOSE JOB loop" : "Inside CANCEL JOB loop");
    }
    const LRESULT reply = sendCopyData(record->hDRAL, messageId, block, VOK_DRAL_BLOCK_SIZE);
    logReply(isOpen    ? "OPENJOB SendMessage rc = "
             : isClose ? "CLOSEJOB SendMessage rc = "
             : isPage  ? "STARTPAGE SendMessage rc = "
                       : "CANCELJOB SendMessage rc = ",
             reply);
    if (isOpen && reply == YESPRINT) {
        record->epDoc |= VOK_EPDOC_OPENJOB;
    }
    if (!isOpen && !isPage) {
        record->hDRAL = NULL;
    }
    return reply;
}

LONG VOKSendDralMsg(const EventBlock* eventBlock, DWORD messageId, VKDATA* record) {
    beginCall("VOKSendDralMsg");
    LRESULT reply;
    if (osFamily() == family_9x) {
        trace("SendDRALMsg9X");
        reply = dral9x(eventBlock, messageId, record);
    } else {
        trace("SendDRALMsgXP");
        reply = record->dralMode == VOK_MODE_PIPE ? dralByPipe(eventBlock, messageId, record)
                                                  : dralByWindow(eventBlock, messageId, record);
    }
    endCall();
    return (LONG)reply;
}

static LRESULT nembByWindow(const EventBlock* block, DWORD messageId, const VKDATA* record) {
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    const BOOL isCancel = messageId == SM_CANCELJOB;
    if (isOpen || isClose || isCancel) {
        logHandle(isOpen    ? "SM_OPENJOB. Nemb HWND = "
                  : isClose ? "SM_CLOSEJOB. Nemb HWND = "
                            : "SM_CANCELJOB. Nemb HWND = ",
                  record->hNEMB);
    }
    const LRESULT reply = sendCopyData(record->hNEMB, messageId, block, VOK_NEMB_BLOCK_SIZE);
    if (isClose) {
        const DWORD endTime = GetTickCount();
        if (isLogged(level_detail)) {
            char line[lineSize];
            char* const end = putReply(putText(line, "CLOSEJOB SendMessage rc = "), reply);
            writeLine(line, putNumber(putText(end, " - Root Session EndJobTime="), endTime));
        }
        return reply;
    }
    if (!isOpen && !isCancel) {
        logHandle("SM_STARTPAGE/ENDPAGE. Nemb HWND = ", record->hNEMB);
    }
    logReply(isOpen     ? "OPENJOB SendMessage rc = "
             : isCancel ? "CANCELJOB SendMessage rc = "
                        : "STARTPAGE/ENDPAGE SendMessage rc = ",
             reply);
    return reply;
}

static LRESULT nembByPipe(const EventBlock* block, DWORD messageId, VKDATA* record) {
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    const BOOL isCancel = messageId == SM_CANCELJOB;
    if (isOpen || isClose || isCancel) {
        logHandle(isOpen    ? "SM_OPENJOB. Nemb HPIPE = "
                  : isClose ? "SM_CLOSEJOB. Nemb HPIPE = "
                            : "SM_CANCELJOB. Nemb HPIPE = ",
                  record->hNEMB);
    }
    if (isOpen) {
        connectPipe(record->hNEMB);
    }
    record->epDoc &= isClose ? ~(DWORD)VOK_EPDOC_OPENJOB : ~0UL;
    const LONG reply = exchangeWithNemb(record->hNEMB, messageId, block);
    if (!isOpen && !isClose && !isCancel) {
        logHandle("SM_STARTPAGE/ENDPAGE. Nemb HPIPE = ", record->hNEMB);
    }
    logReply(isOpen     ? "OPENJOB WriteNembPipe rc = "
             : isClose  ? "CLOSEJOB WriteNembPipe rc = "
             : isCancel ? "CANCELJOB WriteNembPipe rc = "
                        : "STARTPAGE/ENDPAGE WriteNembPipe rc = ",
             reply);
    if (isClose) {
        closePipe(&record->hNEMB);
        logNumber("Close PIPENon Root Session - EndJobTime=", GetTickCount());
    } else if (isCancel) {
        closePipe(&record->hNEMB);
        logText("Close PIPE. rc = TRUE");
    }
    return isOpen ? reply : YESPRINT;
}

static LRESULT nemb9x(const EventBlock* block, DWORD messageId, const VKDATA* record) {
    const BOOL isOpen = messageId == SM_OPENJOB;
    const BOOL isClose = messageId == SM_CLOSEJOB;
    const BOOL isCancel = messageId == SM_CANCELJOB;
    if (isOpen || isClose || isCancel) {
        logText(isOpen ? "SM_OPENJOB" : isClose ? "SM_CLOSEJOB" : "SM_CANCELJOB");
    }
    const LRESULT reply = sendCopyData(record->hNEMB, messageId, block, VOK_NEMB_BLOCK_SIZE);
    logReply(isOpen     ? "OPENJOB SendMessage rc = "
             : isClose  ? "CLOSEJOB SendMessage rc = "
             : isCancel ? "CANCELJOB SendMessage rc = "
                        : "SM_STARTPAGE/ENDPAGE default. SendMessage rc = ",
             reply);
    return reply;
}

LONG VOKSendNembMsg(const EventBlock* eventBlock, DWORD messageId, VKDATA* record) {
    beginCall("VOKSendNembMsg");
    LRESULT reply;
    if (osFamily() == family_9x) {
        trace("SendNEMBMsg9X");
        reply = nemb9x(eventBlock, messageId, record);
    } else {
        trace("SendNEMBMsgXP");
        reply = record->nembMode == VOK_MODE_PIPE ? nembByPipe(eventBlock, messageId, record)
                                                  : nembByWindow(eventBlock, messageId, record);
    }
    endCall();
    return (LONG)reply;
}

static void logGeneric(const char* name, HANDLE companion, DWORD viaPipe, DWORD messageId,
                       BYTE first, DWORD length) {
    char line[lineSize];
    char* end = putText(putText(line, "FN="), name);
    end = putNumber(putText(end, " hXfile="), (DWORD)(ULONG_PTR)companion);
    end = putNumber(putText(end, " viaPipe="), viaPipe);
    end = putNumber(putText(end, " dwMsg="), messageId);
    end = putNumber(putText(end, " data="), first);
    writeLine(line, putNumber(putText(end, " length="), length));
}

static DWORD writeGeneric(HANDLE pipe, DWORD messageId, const BYTE* data, DWORD length) {
    ConnectNamedPipe(pipe, NULL);
    if (GetLastError() != ERROR_PIPE_CONNECTED) {
        return 0;
    }
    DWORD moved = 0;
    WriteFile(pipe, &messageId, sizeof messageId, &moved, NULL);
    return (DWORD)WriteFile(pipe, data, length, &moved, NULL);
}

DWORD VOKSendMsgEx(const char* friendlyName, HANDLE companion, DWORD viaPipe, DWORD messageId,
                   const BYTE* data, DWORD length) {
    beginCall("VOKSendMsgEx");
    trace("sendMsgEx");
    if (isLogged(level_detail)) {
        logGeneric(friendlyName, companion, viaPipe, messageId, *data, length);
    }
    const DWORD result = viaPipe == VOK_MODE_PIPE
                             ? writeGeneric(companion, messageId, data, length)
                             : (DWORD)PostMessageA((HWND)companion, messageId, 0, *data);
    endCall();
    return result;
}
