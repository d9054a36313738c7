// The record of a failure of the logging itself.
#pragma once

#include <windows.h>

#include <string>

namespace vok {

// Writes one record whatever the options say, with a logger of its own that lives as long as the
// library. Its file, logName + ".log", and its category are those of the first call that gets that
// far; with an empty logName the file is named after the module's (null: the host program's) first
// four characters. Throws Win32Exception when that name, the logger or the record can't be made.
void CriticalLog(const std::string& logName, const std::string& categoryName,
                 const std::string& message, HMODULE module);

}  // namespace vok
