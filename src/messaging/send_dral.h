// Delivering a job event to DRAL.
#pragma once

#include "messaging/protocol.h"

namespace vok {

// Return DRAL's reply, or the library's own answer where the event can't be delivered. A null
// record is answered YESPRINT.
Reply SendDRALMsgXP(const EventBlock* block, DWORD messageId, VKDATA* record);
Reply SendDRALMsg9X(const EventBlock* block, DWORD messageId, VKDATA* record);

}  // namespace vok
