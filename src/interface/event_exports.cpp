// The exports that forward a job's events.

#include <vok/vok.h>

#include "interface/call_frame.h"
#include "messaging/send_dral.h"
#include "messaging/send_msg_ex.h"
#include "messaging/send_nemb.h"
#include "support/os_family.h"

namespace {

vok::Reply SendDRALMsg(const EventBlock* block, DWORD messageId, VKDATA* record) {
    if (vok::GetOsFamily() == vok::family9x) {
        return vok::SendDRALMsg9X(block, messageId, record);
    }
    return vok::SendDRALMsgXP(block, messageId, record);
}

vok::Reply SendNEMBMsg(const EventBlock* block, DWORD messageId, VKDATA* record) {
    if (vok::GetOsFamily() == vok::family9x) {
        return vok::SendNEMBMsg9X(block, messageId, record);
    }
    return vok::SendNEMBMsgXP(block, messageId, record);
}

}  // namespace

extern "C" LONG __cdecl VOKSendDralMsg(const EventBlock* eventBlock, DWORD messageId,
                                       VKDATA* record) {
    const vok::CallFrame frame("VOKSendDralMsg");
    return static_cast<LONG>(SendDRALMsg(eventBlock, messageId, record));
}

extern "C" LONG __cdecl VOKSendNembMsg(const EventBlock* eventBlock, DWORD messageId,
                                       VKDATA* record) {
    const vok::CallFrame frame("VOKSendNembMsg");
    return static_cast<LONG>(SendNEMBMsg(eventBlock, messageId, record));
}

extern "C" DWORD __cdecl VOKSendMsgEx(const char* friendlyName, HANDLE companion, DWORD viaPipe,
                                      DWORD messageId, const BYTE* data, DWORD length) {
    const vok::CallFrame frame("VOKSendMsgEx");
    return vok::sendMsgEx(friendlyName, companion, viaPipe, messageId, data, length);
}
