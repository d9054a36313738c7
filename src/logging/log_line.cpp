#include "logging/log_line.h"

#include <cstdarg>
#include <cstdio>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "support/exception.h"

namespace vok {

namespace {

constexpr std::size_t formatBufferSize = 512;

template <typename Text>
void writeDetail(const LoggerInUse& inUse, const Text& text) {
    try {
        if (inUse.logger != nullptr &&
            inUse.logger->isEnabled(inUse.category.get(), LEVEL_DETAIL)) {
            inUse.logger->write(inUse.category.get(), LEVEL_DETAIL, text);
        }
    } catch (const Win32Exception&) {
        // The record is lost; the job goes on.
        return;
    }
}

}  // namespace

void logLine(const std::string& text) {
    const LoggerInUse inUse = loggerSlot().use();
    if (inUse.category != nullptr) {
        writeDetail(inUse, text);
    }
}

void logPrintf(const char* format, ...) {
    const LoggerInUse inUse = loggerSlot().use();
    if (inUse.category == nullptr) {
        return;
    }
    char buffer[formatBufferSize];
    std::va_list arguments;
    va_start(arguments, format);
    // The C runtime's own: the compiler's replacement of vsnprintf would be linked in.
    _vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    buffer[sizeof buffer - 1] = '\0';
    writeDetail(inUse, static_cast<const char*>(buffer));
}

}  // namespace vok
