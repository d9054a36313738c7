#include "interface/call_frame.h"

#include <string>

#include "logging/function_trace.h"
#include "logging/option_names.h"
#include "logging/xfiles_logger.h"
#include "support/exception.h"
#include "support/library_module.h"

namespace vok {

CallFrame::CallFrame(const char* exportName) {
    try {
        std::string prefix;
        appendModuleNamePrefix(prefix, libraryModule());
        scope_.emplace(exportCategory, exportLogFile, exportAppName, prefix, prefixedNameMode);
        traceCall(exportName);
    } catch (const Win32Exception&) {
        // The call goes on without its trace, and without its lines unless there is a logger.
        return;
    }
}

}  // namespace vok
