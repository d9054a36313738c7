#include "logging/log_category.h"

#include <cstdint>
#include <string>

namespace vok {

LogCategory::LogCategory(const std::string& name, std::uint32_t defaultMask)
    : name_(name), defaultMask_(defaultMask) {}

LogCategory::~LogCategory() = default;

const std::string& LogCategory::name() const {
    return name_;
}

void LogCategory::setDefaultMask(std::uint32_t mask) {
    defaultMask_ = mask;
}

std::uint32_t LogCategory::defaultMask() const {
    return defaultMask_;
}

}  // namespace vok
