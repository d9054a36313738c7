// The logging as an export sets it up.
#pragma once

#include "logging/option_names.h"
#include "logging/xfiles_log_category.h"

namespace vok::test {

// Its log is System::logPath of a machine whose log is started.
struct LogScope : XFilesLogCategory {
    LogScope() : XFilesLogCategory(exportCategory, exportLogFile, exportAppName, "DEMO", 1) {}
};

}  // namespace vok::test
