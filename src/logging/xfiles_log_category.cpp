#include "logging/xfiles_log_category.h"

#include <vok/companion.h>

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
    const std::string path = buffer.text();
    const std::size_t backslash = path.rfind('\\');
    out.append(path, backslash == std::string::npos ? 0 : backslash + 1, VOK_MODEL_PREFIX_LENGTH);
    return 0;
}

}  // namespace vok
