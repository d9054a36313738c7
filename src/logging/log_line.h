// Message lines, with which everything outside the logging itself reports.
#ifndef VOK_LOGGING_LOG_LINE_H
#define VOK_LOGGING_LOG_LINE_H

#include <string>

namespace vok {

// Write one message at the detail level under the installed logger's category; nothing without a
// logger. Neither lets a Win32Exception out: a record that can't be written is lost.
void logLine(const std::string& text);

// printf form; what is longer than 511 characters is cut.
__attribute__((format(printf, 1, 2))) void logPrintf(const char* format, ...);

}  // namespace vok

#endif
