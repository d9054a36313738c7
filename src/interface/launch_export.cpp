// The export that begins a job.

#include <vok/vok.h>

#include "interface/call_frame.h"
#include "launch/start_companions.h"
#include "logging/log_line.h"
#include "support/text.h"

extern "C" BOOL __cdecl VOKLaunchXFiles(const char* friendlyName, const char* portName,
                                        VKDATA* record) {
    const DWORD startTime = GetTickCount();
    const vok::CallFrame frame("VOKLaunchXFiles");
    vok::logLine(
        {"FriendlyName = ", vok::toString(friendlyName), ", PortName = ", vok::toString(portName)});
    if (record == nullptr || !vok::startCompanions(friendlyName, portName, *record)) {
        vok::logLine("rc = FALSE from VOKLaunchXFiles");
        return FALSE;
    }
    vok::logLine(
        {"rc = TRUE from VOKLaunchXFiles", " StartJobTime=", vok::toString(startTime, 10)});
    return TRUE;
}
