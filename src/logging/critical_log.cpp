#include "logging/critical_log.h"

#include <mbstring.h>

#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "support/exception.h"
#include "support/name_buffer.h"

namespace vok {

namespace {

constexpr std::uint32_t criticalCategoryWidth = 25;
constexpr std::size_t moduleNameLength = 4;

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
    static const LogCategory category(categoryName, LEVEL_CRITICAL);
    static BasicLogger logger((name + ".log").c_str(), criticalCategoryWidth);
    logger.write(&category, LEVEL_CRITICAL, message);
}

}  // namespace vok
