// Delivering a job event to NEMB.
#pragma once

#include "messaging/protocol.h"

namespace vok {

// Return NEMB's reply, or the library's own answer where the event can't be delivered. A null
// record is answered YESPRINT.
Reply SendNEMBMsgXP(const EventBlock* block, DWORD messageId, VKDATA* record);
Reply SendNEMBMsg9X(const EventBlock* block, DWORD messageId, VKDATA* record);

}  // namespace vok
