#include "logging/logger_slot.h"

#include <utility>

#include "logging/basic_logger.h"
#include "logging/log_category.h"
#include "support/exception.h"

namespace vok {

namespace {

LoggerSlot slot;

}  // namespace

LoggerSlot& loggerSlot() {
    return slot;
}

LoggerInUse loggerInUse() {
    LoggerInUse inUse = slot.use();
    if (inUse.logger == nullptr || inUse.category == nullptr) {
        throw Win32Exception("BasicLogger::getInstance()", 1, "", 0);
    }
    return inUse;
}

LoggerInUse LoggerSlot::use() const {
    const CriticalSectionLock lock(&lock_);
    return current_;
}

void LoggerSlot::setCategory(std::shared_ptr<LogCategory> category) {
    const CriticalSectionLock lock(&lock_);
    current_.category.swap(category);
}

bool LoggerSlot::install(std::shared_ptr<BasicLogger> logger) {
    const CriticalSectionLock lock(&lock_);
    if (current_.logger != nullptr) {
        return false;
    }
    current_.logger = std::move(logger);
    return true;
}

void LoggerSlot::clear() {
    LoggerInUse released;
    const CriticalSectionLock lock(&lock_);
    std::swap(released, current_);
}

}  // namespace vok
