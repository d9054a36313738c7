#include "logging/function_trace.h"

#include <cstdint>
#include <string>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "support/exception.h"
#include "support/inline_text.h"

namespace vok {

namespace {

constexpr std::size_t usualText = 63;

}  // namespace

FunctionTrace::FunctionTrace(BasicLogger* logger, const LogCategory* category,
                             const std::string& name, std::uint32_t level, bool active)
    : category_(category), logger_(logger) {
    if (!active) {
        return;
    }
    level_ = level;
    enabled_ = logger->isEnabled(category, level);
    if (enabled_) {
        name_ = name;
        logger->write(category, level, InlineText<usualText>{"+", name}.c_str());
        logger->increaseDepth();
    }
}

FunctionTrace::~FunctionTrace() {
    if (!enabled_) {
        return;
    }
    try {
        // First, and without memory: else the thread would stay indented.
        logger_->decreaseDepth();
        InlineText<usualText> text{"-", name_};
        if (!rc_.empty()) {
            text.append(" rc=").append(rc_);
        }
        logger_->write(category_, level_, text.c_str());
    } catch (...) {
        // A record that can't be written is lost, and nothing else.
        return;
    }
}

void traceCall(const char* name) {
    const LoggerInUse inUse = loggerInUse();
    BasicLogger* logger = inUse.logger.get();
    const LogCategory* category = inUse.category;
    const bool enabled = logger->isEnabled(category, LEVEL_TRACE);
    const FunctionTrace trace(logger, category, enabled ? name : "", LEVEL_TRACE, true);
}

void traceCallQuietly(const char* name) {
    try {
        traceCall(name);
    } catch (const Win32Exception&) {
        // Without its trace the call goes on as it would with it.
        return;
    }
}

}  // namespace vok
