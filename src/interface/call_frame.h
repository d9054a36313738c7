// What every export that does work does first and last.
#pragma once

#include <optional>

#include "logging/xfiles_log_category.h"

namespace vok {

// Sets up the logging for one call and traces it under the export's name. The job goes on whatever
// comes of that; only exhausted memory leaves it, as the standard library's exception.
class CallFrame {
  public:
    explicit CallFrame(const char* exportName);

  private:
    std::optional<XFilesLogCategory> scope_;
};

}  // namespace vok
