// Security descriptors, access lists and SIDs. They are plain memory, so the system's own functions
// work on them; here their calls are recorded, counted and made to fail.
#include <aclapi.h>

#include <span>
#include <string>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

// Runs the system's own function, unless a failure was asked for.
template <class Function, class... Arguments>
BOOL runReal(Call& call, Function function, Arguments... arguments) {
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    const BOOL result = function(arguments...);
    return call.done(result, result ? 0 : real.getLastError());
}

BOOL WINAPI initializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
    Call call("InitializeSecurityDescriptor", Out{descriptor}, revision);
    return runReal(call, real.initializeSecurityDescriptor, descriptor, revision);
}

BOOL WINAPI setSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL list,
                                      BOOL defaulted) {
    Call call("SetSecurityDescriptorDacl", Out{descriptor}, present,
              std::string(list ? "list" : "null"), defaulted);
    return runReal(call, real.setSecurityDescriptorDacl, descriptor, present, list, defaulted);
}

BOOL WINAPI getSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* list,
                                      LPBOOL defaulted) {
    Call call("GetSecurityDescriptorDacl", Out{descriptor}, Out{present}, Out{list},
              Out{defaulted});
    return runReal(call, real.getSecurityDescriptorDacl, descriptor, present, list, defaulted);
}

BOOL WINAPI allocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD s0,
                                     DWORD s1, DWORD s2, DWORD s3, DWORD s4, DWORD s5, DWORD s6,
                                     DWORD s7, PSID* sid) {
    Call call("AllocateAndInitializeSid", int{authority->Value[5]}, int{count}, s0, Out{sid});
    if ((s1 | s2 | s3 | s4 | s5 | s6 | s7) != 0) {
        call.complain("a number behind the last that counts");
    }
    const BOOL result = runReal(call, real.allocateAndInitializeSid, authority, count, s0, s1, s2,
                                s3, s4, s5, s6, s7, sid);
    call.system().sids += result ? 1 : 0;
    return result;
}

PVOID WINAPI freeSid(PSID sid) {
    Call call("FreeSid", Out{sid});
    --call.system().sids;
    real.freeSid(sid);
    return call.done(PVOID{nullptr});
}

BOOL WINAPI isValidSid(PSID sid) {
    Call call("IsValidSid", Out{sid});
    return runReal(call, real.isValidSid, sid);
}

DWORD WINAPI getLengthSid(PSID sid) {
    Call call("GetLengthSid", Out{sid});
    return call.done(real.getLengthSid(sid));
}

BOOL WINAPI initializeAcl(PACL list, DWORD size, DWORD revision) {
    Call call("InitializeAcl", Out{list}, size, revision);
    return runReal(call, real.initializeAcl, list, size, revision);
}

BOOL WINAPI addAccessAllowedAce(PACL list, DWORD revision, DWORD mask, PSID sid) {
    Call call("AddAccessAllowedAce", Out{list}, revision, hex(mask), Out{sid});
    return runReal(call, real.addAccessAllowedAce, list, revision, mask, sid);
}

BOOL WINAPI getAce(PACL list, DWORD index, LPVOID* entry) {
    Call call("GetAce", Out{list}, index, Out{entry});
    return runReal(call, real.getAce, list, index, entry);
}

BOOL WINAPI setKernelObjectSecurity(HANDLE handle, SECURITY_INFORMATION what,
                                    PSECURITY_DESCRIPTOR descriptor) {
    Call call("SetKernelObjectSecurity", handle, what,
              static_cast<const SECURITY_DESCRIPTOR*>(descriptor));
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    return call.system().handles.isOpen(handle) ? call.done(TRUE)
                                                : call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
}

DWORD WINAPI setSecurityInfo(HANDLE handle, SE_OBJECT_TYPE type, SECURITY_INFORMATION what,
                             PSID owner, PSID group, PACL list, PACL systemList) {
    Call call("SetSecurityInfo", handle, static_cast<int>(type), what, Out{owner}, Out{group},
              std::string(list ? "list" : "null"), Out{systemList});
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    const bool isOpen = call.system().handles.isOpen(handle);
    return call.done(static_cast<DWORD>(isOpen ? ERROR_SUCCESS : ERROR_INVALID_HANDLE));
}

}  // namespace

std::span<const Substitute> securitySubstitutes() {
    static const Substitute all[] = {
        substitute("InitializeSecurityDescriptor", initializeSecurityDescriptor),
        substitute("SetSecurityDescriptorDacl", setSecurityDescriptorDacl),
        substitute("GetSecurityDescriptorDacl", getSecurityDescriptorDacl),
        substitute("AllocateAndInitializeSid", allocateAndInitializeSid),
        substitute("FreeSid", freeSid),
        substitute("IsValidSid", isValidSid),
        substitute("GetLengthSid", getLengthSid),
        substitute("InitializeAcl", initializeAcl),
        substitute("AddAccessAllowedAce", addAccessAllowedAce),
        substitute("GetAce", getAce),
        substitute("SetKernelObjectSecurity", setKernelObjectSecurity),
        substitute("SetSecurityInfo", setSecurityInfo),
    };
    return all;
}

}  // namespace vok::test
