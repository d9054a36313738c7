// Security descriptors and their application to system objects.
#pragma once

#include <windows.h>

namespace vok {

// Holds security attributes whose descriptor a derived class supplies, and applies them. On the 9x
// family there is no security: the descriptor stays null and every operation does nothing.
class Security {
  public:
    virtual ~Security() = 0;
    Security(const Security&) = delete;
    Security& operator=(const Security&) = delete;

    // The attributes stay owned by this object.
    virtual SECURITY_ATTRIBUTES* getAttributes();

    // Gives an existing object the descriptor's access list. Throws Win32Exception.
    virtual void doApply(HANDLE kernelObject);
    virtual void doApply(HKEY registryKey);

  protected:
    Security();

    bool isNT() const { return isNT_; }
    void setDescriptor(SECURITY_DESCRIPTOR* descriptor) {
        attributes_.lpSecurityDescriptor = descriptor;
    }

  private:
    SECURITY_ATTRIBUTES attributes_;
    bool isNT_;
};

}  // namespace vok
