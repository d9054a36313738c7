// A security descriptor that grants everyone full access.
#ifndef VOK_SUPPORT_SECURITY_EVERYONE_H
#define VOK_SUPPORT_SECURITY_EVERYONE_H

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

    void setSecurityIdEveryone();
    DWORD accessListSize() const;
    void makeAccessList();
    void markInheritable();

    std::unique_ptr<SECURITY_DESCRIPTOR> descriptor_;
    std::unique_ptr<ACL, void (*)(void*)> acl_;
    std::unique_ptr<void, SidDeleter> sid_;
};

}  // namespace vok

#endif
