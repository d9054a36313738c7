#include "logging/critical_log.h"

#include <mbstring.h>

#include <cstdint>
#include <optional>
#include <string>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "support/critical_section.h"
#include "support/exception.h"
#include "support/name_buffer.h"

namespace vok {

namespace {

constexpr std::uint32_t criticalCategoryWidth = 25;
constexpr std::size_t moduleNameLength = 4;

// Made by the first record that gets that far, and kept; what can't be made is tried again.
struct CriticalLogger {
    CriticalSection lock;
    std::optional<LogCategory> category;
    std::optional<BasicLogger> logger;
};

CriticalLogger critical;

void makeCriticalLogger(const std::string& name, const std::string& categoryName) {
    const CriticalSectionLock lock(&critical.lock);
    if (!critical.category.has_value()) {
        critical.category.emplace(categoryName, LEVEL_CRITICAL);
    }
    if (!critical.logger.has_value()) {
        critical.logger.emplace((name + ".log").c_str(), criticalCategoryWidth);
    }
}

std::string moduleName(HMODULE module) {
    NameBuffer buffer;
    if (GetModuleFileNameA(module, buffer.data(), NameBuffer::size) == 0) {
        throw Win32Exception("CriticalLog(): GetModuleFileName failed", 0, "CriticalLog", 41);
    }
    buffer.terminate();
    _mbslwr(reinterpret_cast<unsigned char*>(buffer.data()));
    const std::string path = buffer.text();
    // A backslash at the very end doesn't count.
    const std::size_t backslash =
        path.size() < 2 ? std::string::npos : path.rfind('\\', path.size() - 2);
    return path.substr(backslash == std::string::npos ? 0 : backslash + 1, moduleNameLength);
}

}  // namespace

void CriticalLog(const std::string& logName, const std::string& categoryName,
                 const std::string& message, HMODULE module) {
    const std::string ownName = logName.empty() ? moduleName(module) : std::string();
    const std::string& name = logName.empty() ? ownName : logName;
    makeCriticalLogger(name, categoryName);
    critical.logger->write(&*critical.category, LEVEL_CRITICAL, message);
}

}  // namespace vok
