// Sending an arbitrary message to a companion.
#pragma once

#include <vok/vok.h>

namespace vok {

// Posts the message to the window, or writes it to the pipe if that was connected before. The
// arguments and the result are VOKSendMsgEx's.
DWORD sendMsgEx(const char* friendlyName, HANDLE companion, DWORD viaPipe, DWORD messageId,
                const BYTE* data, DWORD length);

}  // namespace vok
