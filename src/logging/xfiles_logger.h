// The logger of the exported calls, whose options live in the machine-wide registry.
#ifndef VOK_LOGGING_XFILES_LOGGER_H
#define VOK_LOGGING_XFILES_LOGGER_H

#include <cstdint>
#include <memory>
#include <string>

#include "logging/basic_logger.h"

namespace vok {

class LogCategory;

// The key of the options that all programs of `appName` share, below the software's base key.
std::string loggerKeyPath(const std::string& basePath, const std::string& appName);

// The log file's name. With the common log on (1), every program of `appName` writes one file;
// mode 1 puts the prefix before it.
std::string logNameFor(std::uint32_t commonLog, std::int32_t mode, const std::string& logFileName,
                       const std::string& appName, const std::string& namePrefix);

// Made at the beginning of an exported call and destroyed at its end, unless calls overlap. The
// registry key of its options is shared with the companion programs, hence the name. Creation,
// count and release hold one lock.
class XFilesLogger : public BasicLogger {
  public:
    // Makes `category` the one under which message lines are written.
    XFilesLogger(const char* logName, std::shared_ptr<LogCategory> category);
    ~XFilesLogger() override;

    // Creates and installs the logger unless there is one, and counts the caller in if there is one
    // now. Without a configuration library there is none. The category is copied: the caller's may
    // go before the logger does. mode 1: the log file's name begins with the prefix.
    // Throws Win32Exception when the logger or the record of a failure can't be made; the caller
    // isn't counted then.
    static void CreateInstance(const std::string& logFileName, const LogCategory& category,
                               const std::string& appName, const std::string& namePrefix,
                               std::int32_t mode);

    // Counts the caller out, also one that was never counted in; destroys the logger at zero.
    static void release();

    // Reads the option from the registry; creates it with its default when it is missing. When the
    // registry fails, the value stays as it was and a critical record says so.
    void getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue) override;
};

}  // namespace vok

#endif
