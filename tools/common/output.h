// What the tools print.
#ifndef VOK_TOOLS_COMMON_OUTPUT_H
#define VOK_TOOLS_COMMON_OUTPUT_H

#include <string>

namespace vok::tools {

// Prints to the standard output; what gets lost shows in isAllPrinted.
void print(const std::string& text);

// Whether everything that was printed has arrived: a full disk must not look like an empty report.
bool isAllPrinted();

// Prints to the standard error output. When that fails nobody is left to be told.
void complain(const std::string& text);

}  // namespace vok::tools

#endif
