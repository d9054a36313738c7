#include "support/security.h"

#include <aclapi.h>

#include "support/exception.h"
#include "support/os_version.h"

namespace vok {

Security::Security()
    : attributes_{sizeof attributes_, nullptr, TRUE}, isNT_(OsVersion::getInstance().isNT()) {}

Security::~Security() = default;

SECURITY_ATTRIBUTES* Security::getAttributes() {
    return &attributes_;
}

void Security::doApply(HANDLE kernelObject) {
    if (!isNT_) {
        return;
    }
    if (SetKernelObjectSecurity(kernelObject, DACL_SECURITY_INFORMATION,
                                attributes_.lpSecurityDescriptor) == 0) {
        const DWORD error = GetLastError();
        throw Win32Exception("Security::doApply() SetKernelObjectSecurity failed ", error,
                             "Security", 102);
    }
}

void Security::doApply(HKEY registryKey) {
    if (!isNT_) {
        return;
    }
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    if (GetSecurityDescriptorDacl(attributes_.lpSecurityDescriptor, &present, &list, &defaulted) ==
        0) {
        const DWORD error = GetLastError();
        throw Win32Exception("Security::doApply() GetSecurityDescriptorDacl failed ", error,
                             "Security", 66);
    }
    const DWORD result = SetSecurityInfo(registryKey, SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION,
                                         nullptr, nullptr, list, nullptr);
    if (result != ERROR_SUCCESS) {
        throw Win32Exception("Security::doApply() SetSecurityInfo failed ", result, "Security", 84);
    }
}

}  // namespace vok
