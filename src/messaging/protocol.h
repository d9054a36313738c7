// The wire between the library and its companions (vok/companion.h is its contract).
#pragma once

#include <vok/vok.h>

#include <string>

namespace vok {

// A companion's answer is a machine word on the window route, 32 bits on the pipe route. It is
// compared as it is and returned to the print processor truncated to 32 bits.
using Reply = LRESULT;

// Sends one event to a companion's window and waits for its answer.
Reply sendCopyData(HANDLE window, DWORD messageId, const EventBlock* block, DWORD blockSize);

// Waits until the companion has opened its end. False, and logged, on any error but that it has
// done so already.
bool connectPipe(HANDLE pipe);

// Write one event to a pipe and read the 4-byte answer; 0 for a null pipe or block, without any
// call. Bytes that are not answered stay as they were: NEMB's word begins as the result of its
// first write, so that a NEMB that doesn't answer yields YESPRINT; DRAL's begins as NOPRINT.
LONG WriteNembPipe(HANDLE pipe, const EventBlock* block, DWORD messageId);
LONG WriteDralPipe(HANDLE pipe, const EventBlock* block);

// Disconnects and closes the pipe in the slot and makes the slot null. Returns the result of the
// disconnection; 0 for a null slot.
LONG ClosePipe(HANDLE* slot);

// "NOPRINT", "YESPRINT", "WAITPRINT", or the low 32 bits as a signed decimal number.
std::string ReplyText(Reply reply);

// The flag that says that the job was opened towards DRAL.
inline bool isJobOpen(const VKDATA& record) {
    return (record.epDoc & VOK_EPDOC_OPENJOB) != 0;
}
inline void setJobOpen(VKDATA& record) {
    record.epDoc |= VOK_EPDOC_OPENJOB;
}
inline void clearJobOpen(VKDATA& record) {
    record.epDoc &= ~static_cast<DWORD>(VOK_EPDOC_OPENJOB);
}

// What an event comes to whose flag is not as it has to be: logged, as not set also where it is
// set, and YESPRINT.
Reply flagInWrongState();

// Opens the trace of a sender; a failure is logged by its text and the event goes on.
void traceEvent(const char* name);

}  // namespace vok
