// The logger of the exported calls, whose options live in the machine-wide registry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "logging/basic_logger.h"
#include "logging/log_category.h"
#include "support/inline_text.h"

namespace vok {

// The mode in which the log file's name begins with the model prefix.
inline constexpr std::int32_t prefixedNameMode = 1;

// The log file's name. With the common log on (1), every program of `appName` writes one file.
std::string logNameFor(std::uint32_t commonLog, std::int32_t mode, const std::string& logFileName,
                       const std::string& appName, const std::string& namePrefix);

// The registry paths of the options, below HKEY_LOCAL_MACHINE.
struct OptionKeys {
    static constexpr std::size_t usualPath = 96;

    InlineText<usualPath> base;  // must be there: nothing above the logger's key is created
    InlineText<usualPath> logger;
};

// The options that all programs of `appName` share, below the software's base key.
OptionKeys optionKeys(std::string_view basePath, std::string_view appName);

// Made at the beginning of an exported call and destroyed at its end, unless calls overlap. The
// registry key of its options is shared with the companion programs, hence the name. Creation,
// count and release hold one lock.
class XFilesLogger : public BasicLogger {
  public:
    // Message lines are written under a copy of `category`: the caller's may go before the logger
    // does.
    XFilesLogger(const char* logName, const LogCategory& category, const OptionKeys& keys);
    ~XFilesLogger() override;

    // Creates and installs the logger unless there is one, and counts the caller in if there is one
    // now. Without a configuration library there is none. Throws Win32Exception when the logger or
    // the record of a failure can't be made; the caller isn't counted then.
    static void CreateInstance(const std::string& logFileName, const LogCategory& category,
                               const std::string& appName, const std::string& namePrefix,
                               std::int32_t mode);

    // Counts the caller out, also one that was never counted in; destroys the logger at zero.
    static void release();

    // Reads the option from the registry; creates it with its default when it is missing. When the
    // registry fails, the value stays as it was and a critical record says so.
    void getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue) override;

    const LogCategory* messageCategory() const override { return &category_; }

  private:
    const LogCategory category_;
    const OptionKeys keys_;
};

}  // namespace vok
