// A security descriptor that grants everyone full access.
#pragma once

#include <windows.h>

#include <memory>

#include "support/security.h"

namespace vok {

// The spooler's account and the user's companions share what is made with it. Owns its SID, access
// list and descriptor.
class SecurityEveryone : public Security {
  public:
    // inheritable: the entry is also inherited by sub-containers. Throws Win32Exception.
    explicit SecurityEveryone(bool inheritable);
    ~SecurityEveryone() override;

  private:
    struct SidDeleter {
        void operator()(void* sid) const { FreeSid(sid); }
    };

    // The list's header and one entry, whose SID begins in its last member.
    static constexpr DWORD listRoom =
        sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) - sizeof(DWORD) + SECURITY_MAX_SID_SIZE;

    void setSecurityIdEveryone();
    DWORD accessListSize() const;
    void makeAccessList();
    void markInheritable();
    ACL* list() { return reinterpret_cast<ACL*>(list_); }

    // In place: one of these is made for every look at a registry key.
    SECURITY_DESCRIPTOR descriptor_;
    alignas(DWORD) BYTE list_[listRoom];
    std::unique_ptr<void, SidDeleter> sid_;
};

}  // namespace vok
