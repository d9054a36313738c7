// The per-call set-up of the logging.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "logging/log_category.h"

namespace vok {

// Creates or re-uses the logger for as long as it lives. Its default mask is LEVEL_CRITICAL.
class XFilesLogCategory : public LogCategory {
  public:
    // The arguments are XFilesLogger::CreateInstance's. Throws Win32Exception as that does.
    XFilesLogCategory(const std::string& categoryName, const std::string& logFileName,
                      const std::string& appName, const std::string& namePrefix, std::int32_t mode);
    ~XFilesLogCategory() override;
    XFilesLogCategory(const XFilesLogCategory&) = delete;
};

// Appends the model prefix, the first four characters of the module's file name, to `out`; nothing
// when the name can't be had. Returns 0. (Launches have a rule of their own, GetModuleNamePrefix.)
int appendModuleNamePrefix(std::string& out, HMODULE module);

}  // namespace vok
