// The library's own messages, caught instead of written.
#ifndef VOK_TOOLS_DOCTOR_CAPTURE_LOGGER_H
#define VOK_TOOLS_DOCTOR_CAPTURE_LOGGER_H

#include <memory>
#include <string>
#include <vector>

namespace vok::doctor {

// While it lives, every message of the library's code goes into `lines`; file and registry are not
// touched. There must be no other logger.
class MessageCapture {
  public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    const std::vector<std::string>& lines() const { return *lines_; }

  private:
    std::shared_ptr<std::vector<std::string>> lines_;
};

}  // namespace vok::doctor

#endif
