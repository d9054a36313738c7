#include "messaging/protocol.h"

#include <string>

#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/exception.h"
#include "support/text.h"

namespace vok {

Reply sendCopyData(HANDLE window, DWORD messageId, const EventBlock* block, DWORD blockSize) {
    COPYDATASTRUCT data = {messageId, blockSize, const_cast<EventBlock*>(block)};
    return SendMessageA(static_cast<HWND>(window), WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
}

bool connectPipe(HANDLE pipe) {
    if (ConnectNamedPipe(pipe, nullptr) != 0) {
        return true;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_PIPE_CONNECTED) {
        return true;
    }
    logLine({"ConnectNamedPipe failed! GetLastError = ", toString(error, 10), "rc = YESPRINT"});
    return false;
}

LONG WriteNembPipe(HANDLE pipe, const EventBlock* block, DWORD messageId) {
    if (pipe == nullptr || block == nullptr) {
        return 0;
    }
    DWORD moved = 0;
    LONG reply = WriteFile(pipe, &messageId, sizeof messageId, &moved, nullptr);
    WriteFile(pipe, block, VOK_NEMB_BLOCK_SIZE, &moved, nullptr);
    ReadFile(pipe, &reply, sizeof reply, &moved, nullptr);
    return reply;
}

LONG WriteDralPipe(HANDLE pipe, const EventBlock* block) {
    if (pipe == nullptr || block == nullptr) {
        return 0;
    }
    DWORD moved = 0;
    LONG reply = 0;
    WriteFile(pipe, block, VOK_DRAL_BLOCK_SIZE, &moved, nullptr);
    ReadFile(pipe, &reply, sizeof reply, &moved, nullptr);
    return reply;
}

LONG ClosePipe(HANDLE* slot) {
    if (slot == nullptr) {
        return 0;
    }
    const BOOL result = DisconnectNamedPipe(*slot);
    if (result == 0) {
        // Asked for and dropped: a call that this function has always made.
        GetLastError();
    }
    CloseHandle(*slot);
    *slot = nullptr;
    return result;
}

std::string ReplyText(Reply reply) {
    switch (const auto code = static_cast<LONG>(reply)) {
        case NOPRINT:
            return "NOPRINT";
        case YESPRINT:
            return "YESPRINT";
        case WAITPRINT:
            return "WAITPRINT";
        default:
            return toString(code, 10);
    }
}

Reply flagInWrongState() {
    logLine("OPENJOB flag was NOT set in epDoc. rc = YESPRINT");
    return YESPRINT;
}

void traceEvent(const char* name) {
    try {
        traceCall(name);
    } catch (const Win32Exception& failure) {
        logLine(failure.getErrorText());
    }
}

}  // namespace vok
