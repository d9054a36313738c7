#include "logging/xfiles_log_category.h"

#include <vok/companion.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "logging/levels.h"
#include "logging/xfiles_logger.h"
#include "support/name_buffer.h"

namespace vok {

XFilesLogCategory::XFilesLogCategory(const std::string& categoryName,
                                     const std::string& logFileName, const std::string& appName,
                                     const std::string& namePrefix, std::int32_t mode)
    : LogCategory(categoryName, LEVEL_CRITICAL) {
    XFilesLogger::CreateInstance(logFileName, *this, appName, namePrefix, mode);
}

XFilesLogCategory::~XFilesLogCategory() {
    XFilesLogger::release();
}

int appendModuleNamePrefix(std::string& out, HMODULE module) {
    NameBuffer buffer;
    if (GetModuleFileNameA(module, buffer.data(), NameBuffer::size) == 0) {
        return 0;
    }
    buffer.terminate();
    const std::string_view path = buffer.text();
    // The whole path when it has none.
    const std::size_t fileName = path.rfind('\\') + 1;
    out += path.substr(fileName, VOK_MODEL_PREFIX_LENGTH);
    return 0;
}

}  // namespace vok
