#include "logging/log_line.h"

#include <cstdarg>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "support/exception.h"
#include "support/inline_text.h"

namespace vok {

namespace {

constexpr std::size_t formatBufferSize = 512;
constexpr std::size_t usualText = 127;

// Has `write` write with the logger if the options ask for it.
template <typename Write>
void writeDetail(const LoggerInUse& inUse, const Write& write) {
    if (inUse.category == nullptr) {
        return;
    }
    try {
        if (inUse.logger->isEnabled(inUse.category, LEVEL_DETAIL)) {
            write();
        }
    } catch (const Win32Exception&) {
        // The record is lost; the job goes on.
        return;
    }
}

}  // namespace

void logLine(const char* text) {
    const LoggerInUse inUse = loggerSlot().use();
    writeDetail(inUse, [&] { inUse.logger->write(inUse.category, LEVEL_DETAIL, text); });
}

void logLine(const std::string& text) {
    const LoggerInUse inUse = loggerSlot().use();
    writeDetail(inUse, [&] { inUse.logger->write(inUse.category, LEVEL_DETAIL, text); });
}

void logLine(std::initializer_list<std::string_view> parts) {
    const LoggerInUse inUse = loggerSlot().use();
    writeDetail(inUse, [&] {
        inUse.logger->write(inUse.category, LEVEL_DETAIL, InlineText<usualText>(parts).c_str());
    });
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
    writeDetail(inUse, [&] { inUse.logger->write(inUse.category, LEVEL_DETAIL, buffer); });
}

}  // namespace vok
