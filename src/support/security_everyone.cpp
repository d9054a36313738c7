#include "support/security_everyone.h"

#include <cstdint>

#include "support/exception.h"

namespace vok {

namespace {

constexpr DWORD listHeaderSize = sizeof(ACL);
// An entry without its SID; the four bytes of its SidStart member are left over.
constexpr DWORD entrySize = 8;

constexpr const char* initializeFailed =
    "SecurityEveryone::SecurityEveryone() InitializeSecurityDescriptor failed";

[[noreturn]] void fail(const char* what, std::uint32_t line) {
    const DWORD error = GetLastError();
    throw Win32Exception(what, error, "SecurityEveryone", line);
}

void check(BOOL succeeded, std::uint32_t line) {
    if (succeeded == 0) {
        fail(initializeFailed, line);
    }
}

}  // namespace

SecurityEveryone::SecurityEveryone(bool inheritable) {
    if (!isNT()) {
        return;
    }
    check(InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION), 62);
    setSecurityIdEveryone();
    makeAccessList();
    if (inheritable) {
        markInheritable();
    }
    setDescriptor(&descriptor_);
}

SecurityEveryone::~SecurityEveryone() = default;

void SecurityEveryone::setSecurityIdEveryone() {
    SID_IDENTIFIER_AUTHORITY worldAuthority = SECURITY_WORLD_SID_AUTHORITY;
    void* sid = nullptr;
    if (AllocateAndInitializeSid(&worldAuthority, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0,
                                 &sid) == 0) {
        fail("SecurityEveryone::setSecurityIdEveryone() AllocateAndInitializeSid failed", 86);
    }
    sid_.reset(sid);
}

DWORD SecurityEveryone::accessListSize() const {
    if (IsValidSid(sid_.get()) == 0) {
        fail("SecurityEveryone::SecurityEveryone() IsValidSid failed", 127);
    }
    return listHeaderSize + entrySize + GetLengthSid(sid_.get());
}

void SecurityEveryone::makeAccessList() {
    const DWORD size = accessListSize();
    check(InitializeAcl(list(), size, ACL_REVISION), 151);
    check(AddAccessAllowedAce(list(), ACL_REVISION, GENERIC_ALL, sid_.get()), 159);
    check(SetSecurityDescriptorDacl(&descriptor_, TRUE, list(), FALSE), 167);
}

void SecurityEveryone::markInheritable() {
    void* entry = nullptr;
    check(GetAce(list(), 0, &entry), 101);
    static_cast<ACE_HEADER*>(entry)->AceFlags |= CONTAINER_INHERIT_ACE;
}

}  // namespace vok
