#include "job_record.h"

#include <string>

#include "common/agreement.h"

namespace vok::sample {
namespace {

void closeAndForget(HANDLE& handle) {
    if (handle != nullptr)
        CloseHandle(handle);
    handle = nullptr;
}

void dropCompanion(HANDLE& companion, DWORD mode) {
    if (mode == VOK_MODE_PIPE && companion != nullptr && companion != INVALID_HANDLE_VALUE) {
        DisconnectNamedPipe(companion);
        CloseHandle(companion);
    }
    companion = nullptr;
}

}  // namespace

JobRecord::JobRecord(const std::string& friendlyName) {
    copyText(data_.dralTitleSuffix, sizeof data_.dralTitleSuffix, titleSuffix(friendlyName));
}

JobRecord::~JobRecord() {
    dropCompanions();
    closeAndForget(data_.hNEMBProc);
    closeAndForget(data_.hDRALProc);
    closeAndForget(data_.hNEMBThread);
    closeAndForget(data_.hDRALThread);
}

void JobRecord::dropCompanions() {
    dropCompanion(data_.hDRAL, data_.dralMode);
    dropCompanion(data_.hNEMB, data_.nembMode);
}

}  // namespace vok::sample
