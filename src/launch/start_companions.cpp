#include "launch/start_companions.h"

#include "launch/start_dral.h"
#include "launch/start_nemb.h"
#include "support/os_family.h"

namespace vok {

namespace {

HANDLE StartDRAL(const char* friendlyName, const char* portName, VKDATA* record) {
    if (GetOsFamily() == family9x) {
        return StartDRAL9X(friendlyName, record);
    }
    return StartDRALXP(friendlyName, portName, record);
}

HANDLE StartNEMB(const char* friendlyName, const char* portName, VKDATA* record) {
    if (GetOsFamily() == family9x) {
        return StartNEMB9X(friendlyName, record);
    }
    return StartNEMBXP(friendlyName, portName, record);
}

}  // namespace

bool startCompanions(const char* friendlyName, const char* portName, VKDATA& record) {
    record.hDRAL = StartDRAL(friendlyName, portName, &record);
    if (record.hDRAL != nullptr || record.dralMode == VOK_MODE_WINDOW) {
        record.hNEMB = StartNEMB(friendlyName, portName, &record);
    }
    return record.hDRAL != nullptr && record.hNEMB != nullptr;
}

}  // namespace vok
