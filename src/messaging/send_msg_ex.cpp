#include "messaging/send_msg_ex.h"

#include <cstdint>
#include <string>

#include "logging/log_line.h"
#include "messaging/protocol.h"
#include "support/text.h"

namespace vok {

namespace {

// Only a pipe that was connected before is written to. A connect that succeeds leaves the last
// error as it was, so a stale ERROR_PIPE_CONNECTED of the thread counts too.
DWORD writeToPipe(HANDLE pipe, DWORD messageId, const BYTE* data, DWORD length) {
    ConnectNamedPipe(pipe, nullptr);
    if (GetLastError() != ERROR_PIPE_CONNECTED) {
        return 0;
    }
    DWORD moved = 0;
    WriteFile(pipe, &messageId, sizeof messageId, &moved, nullptr);
    return static_cast<DWORD>(WriteFile(pipe, data, length, &moved, nullptr));
}

}  // namespace

DWORD sendMsgEx(const char* friendlyName, HANDLE companion, DWORD viaPipe, DWORD messageId,
                const BYTE* data, DWORD length) {
    traceEvent("sendMsgEx");
    const BYTE firstByte = data == nullptr ? BYTE{0} : *data;
    const auto handle = static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(companion));
    std::string line = "FN=";
    line << friendlyName << " hXfile=" << handle << " viaPipe=" << viaPipe << " dwMsg=" << messageId
         << " data=" << static_cast<unsigned long>(firstByte) << " length=" << length;
    logLine(line);
    if (companion == nullptr || length == 0) {
        logLine("Invalid input");
        return 0;
    }
    if (viaPipe != VOK_MODE_PIPE) {
        return static_cast<DWORD>(
            PostMessageA(static_cast<HWND>(companion), messageId, 0, firstByte));
    }
    return writeToPipe(companion, messageId, data, length);
}

}  // namespace vok
