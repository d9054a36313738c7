#include "logging/logger_slot.h"

#include <memory>
#include <utility>

#include "logging/basic_logger.h"
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
    if (inUse.category == nullptr) {
        throw Win32Exception("BasicLogger::getInstance()", 1, "", 0);
    }
    return inUse;
}

LoggerInUse LoggerSlot::use() const {
    LoggerInUse inUse{current_.load()};
    if (inUse.logger != nullptr) {
        inUse.category = inUse.logger->messageCategory();
    }
    return inUse;
}

bool LoggerSlot::install(std::shared_ptr<BasicLogger> logger) {
    std::shared_ptr<BasicLogger> none;
    return current_.compare_exchange_strong(none, std::move(logger));
}

void LoggerSlot::clear() {
    current_.store(nullptr);
}

}  // namespace vok
