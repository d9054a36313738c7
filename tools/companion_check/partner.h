// The other companion, which the library wants to find before it goes on.
#ifndef VOK_TOOLS_COMPANION_CHECK_PARTNER_H
#define VOK_TOOLS_COMPANION_CHECK_PARTNER_H

#include <windows.h>

#include <string>

namespace vok::check {

// A window that bears the names of a companion which runs already.
class PartnerWindow {
  public:
    PartnerWindow(std::string className, const std::string& title);
    ~PartnerWindow();
    PartnerWindow(const PartnerWindow&) = delete;
    PartnerWindow& operator=(const PartnerWindow&) = delete;

  private:
    std::string className_;
    HWND window_;
};

}  // namespace vok::check

#endif
