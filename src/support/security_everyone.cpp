#include "support/security_everyone.h"

#include <cstdint>
#include <new>

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

SecurityEveryone::SecurityEveryone(bool inheritable) : acl_(nullptr, ::operator delete) {
    if (!isNT()) {
        return;
    }
    descriptor_ = std::make_unique<SECURITY_DESCRIPTOR>();
    check(InitializeSecurityDescriptor(descriptor_.get(), SECURITY_DESCRIPTOR_REVISION), 62);
    setSecurityIdEveryone();
    makeAccessList();
    if (inheritable) {
        markInheritable();
    }
    setDescriptor(descriptor_.get());
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
    acl_.reset(static_cast<ACL*>(::operator new(size)));
    check(InitializeAcl(acl_.get(), size, ACL_REVISION), 151);
    check(AddAccessAllowedAce(acl_.get(), ACL_REVISION, GENERIC_ALL, sid_.get()), 159);
    check(SetSecurityDescriptorDacl(descriptor_.get(), TRUE, acl_.get(), FALSE), 167);
}

void SecurityEveryone::markInheritable() {
    void* entry = nullptr;
    check(GetAce(acl_.get(), 0, &entry), 101);
    static_cast<ACE_HEADER*>(entry)->AceFlags |= CONTAINER_INHERIT_ACE;
}

}  // namespace vok
