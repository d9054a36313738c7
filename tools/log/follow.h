// A log that grows: read as it is written, until somebody ends it.
#ifndef VOK_LOG_FOLLOW_H
#define VOK_LOG_FOLLOW_H

#include <string>

#include "log_reader.h"

namespace vok::log {

// Returns after an interrupt (Ctrl-C), or when the system asks the program to end. The file may
// come later, be renamed, emptied or begun anew; what is not as one might expect is said on the
// standard error output. Throws InputError for what can't be followed.
Summary follow(LogReader& reader, const std::string& path);

}  // namespace vok::log

#endif
