#include "capture_logger.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "logging/option_names.h"

namespace vok::doctor {

namespace {

using Lines = std::shared_ptr<std::vector<std::string>>;

class CaptureLogger : public BasicLogger {
  public:
    explicit CaptureLogger(Lines lines)
        : BasicLogger("vok-doctor.log", 0), lines_(std::move(lines)) {}

    void write(const LogCategory* /*category*/, std::uint32_t /*level*/,
               const std::string& text) override {
        lines_->push_back(text);
    }

    void write(const LogCategory* /*category*/, std::uint32_t /*level*/,
               const char* text) override {
        lines_->emplace_back(text);
    }

    // On, and the messages alone.
    void getOption(const char* /*name*/, std::uint32_t* value,
                   std::uint32_t /*defaultValue*/) override {
        *value = LEVEL_DETAIL;
    }

    const LogCategory* messageCategory() const override { return &category_; }

  private:
    Lines lines_;
    const LogCategory category_{exportCategory, LEVEL_CRITICAL};
};

}  // namespace

MessageCapture::MessageCapture() : lines_(std::make_shared<std::vector<std::string>>()) {
    loggerSlot().install(std::make_shared<CaptureLogger>(lines_));
}

MessageCapture::~MessageCapture() {
    loggerSlot().clear();
}

}  // namespace vok::doctor
