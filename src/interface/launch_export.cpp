// The export that begins a job.

#include <vok/vok.h>

#include "interface/call_frame.h"
#include "launch/start_dral.h"
#include "launch/start_nemb.h"
#include "logging/log_line.h"
#include "support/os_family.h"
#include "support/text.h"

namespace {

HANDLE StartDRAL(const char* friendlyName, const char* portName, VKDATA* record) {
    if (vok::GetOsFamily() == vok::family9x) {
        return vok::StartDRAL9X(friendlyName, record);
    }
    return vok::StartDRALXP(friendlyName, portName, record);
}

HANDLE StartNEMB(const char* friendlyName, const char* portName, VKDATA* record) {
    if (vok::GetOsFamily() == vok::family9x) {
        return vok::StartNEMB9X(friendlyName, record);
    }
    return vok::StartNEMBXP(friendlyName, portName, record);
}

// NEMB is started also when DRAL has no window yet, but not when DRAL's pipe could not be made.
bool startBoth(const char* friendlyName, const char* portName, VKDATA& record) {
    record.hDRAL = StartDRAL(friendlyName, portName, &record);
    if (record.hDRAL != nullptr || record.dralMode == VOK_MODE_WINDOW) {
        record.hNEMB = StartNEMB(friendlyName, portName, &record);
    }
    return record.hDRAL != nullptr && record.hNEMB != nullptr;
}

}  // namespace

extern "C" BOOL VOKLaunchXFiles(const char* friendlyName, const char* portName, VKDATA* record) {
    const DWORD startTime = GetTickCount();
    const vok::CallFrame frame("VOKLaunchXFiles");
    vok::logLine("FriendlyName = " + vok::toString(friendlyName) +
                 ", PortName = " + vok::toString(portName));
    if (record == nullptr || !startBoth(friendlyName, portName, *record)) {
        vok::logLine("rc = FALSE from VOKLaunchXFiles");
        return FALSE;
    }
    vok::logLine("rc = TRUE from VOKLaunchXFiles" + vok::toString(" StartJobTime=") +
                 vok::toString(startTime, 10));
    return TRUE;
}
