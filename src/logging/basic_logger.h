// The diagnostic logger.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "logging/option_cache.h"
#include "support/critical_section.h"
#include "support/inline_text.h"
#include "support/mutex.h"
#include "support/security_everyone.h"

namespace vok {

class LogCategory;

// Owns one log file, decides whether a record is to be written, keeps each thread's nesting depth
// and appends records line by line. Log files are shared between processes under a named mutex.
// Any thread may log. Lock order: the log file's mutex, then the depth lock.
class BasicLogger {
  public:
    // How old a cached option may get, in milliseconds.
    static constexpr std::uint32_t optionAge = 5000;

    static constexpr std::size_t usualMutexName = 40;

    // logName: with a backslash it is the log file's path; a bare name lands in the root of the
    // drive that holds the Windows directory. categoryWidth: columns of the category's name.
    // A logger whose mutex can't be made switches all logging of the process off and writes
    // nothing. Throws Win32Exception when the file's security descriptor can't be made.
    BasicLogger(const char* logName, std::uint32_t categoryWidth);
    BasicLogger(const BasicLogger&) = delete;
    BasicLogger& operator=(const BasicLogger&) = delete;

    // The mutex under which all processes write the log file of that name.
    static InlineText<usualMutexName> mutexNameFor(const char* logName);

    // The installed logger, kept alive for as long as the caller holds it. Throws Win32Exception
    // when none is installed.
    static std::shared_ptr<BasicLogger> getInstance();

    // Whether a record would be written.
    bool isEnabled(const LogCategory* category, std::uint32_t level);

    // An option's value: from the cache when it was read within the last `maxAgeMs` milliseconds,
    // not in this very tick; else from getOption. What getOption leaves alone stays as preset.
    void getCachedOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue,
                         std::uint32_t maxAgeMs);

    // The nesting depth of the calling thread, or of the given one.
    void increaseDepth();
    void decreaseDepth();
    std::int32_t getDepth(std::uint32_t threadId);

    virtual ~BasicLogger();

    // Append one record whatever its level: the caller has decided. A record that can't be
    // appended to the file is lost. Throws Win32Exception when the mutex can't be had.
    virtual void write(const LogCategory* category, std::uint32_t level, const std::string& text);
    virtual void write(const LogCategory* category, std::uint32_t level, const char* text);

    // Throws Win32Exception when the mutex can't be had; a missing file is no error.
    virtual void deleteLogFile();

    // The base class knows "startLog" alone: all bits while the log file exists.
    virtual void getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue);

    // Called by write when the log file did not exist before the record.
    virtual void onLogFileMissing();

    // Text before the record's header and after its message.
    virtual std::string linePrefix(const LogCategory* category, std::uint32_t level,
                                   const char* text);
    virtual std::string lineSuffix(const LogCategory* category, std::uint32_t level,
                                   const char* text);

    // The category under which message lines are written; null when this logger takes none. Lives
    // as long as the logger.
    virtual const LogCategory* messageCategory() const;

    const std::string& logPath() const { return logPath_; }

  private:
    using Line = InlineText<512>;
    struct Header {
        std::uint32_t clock = 1;
        std::uint32_t processId = 0;
        std::uint32_t threadId = 0;
    };

    void getKnownOption(OptionCache::Known option, std::uint32_t* value,
                        std::uint32_t defaultValue);
    void readThrough(OptionCache::Entry& entry, const char* name, std::uint32_t* value,
                     std::uint32_t defaultValue, std::uint32_t maxAgeMs);
    std::int32_t addDepth(std::uint32_t threadId, std::int32_t change);
    Header readHeader();
    void formatLine(Line& line, const Header& header, const LogCategory* category,
                    std::uint32_t level, const char* text);
    void appendLine(std::string_view line);
    HANDLE openLogFile(DWORD disposition);

    std::optional<Mutex> mutex_;
    std::string logPath_;
    std::uint32_t categoryWidth_;
    CriticalSection depthLock_;
    // The first thread's without memory of its own: mostly there is no other.
    std::optional<std::uint32_t> firstThread_;
    std::int32_t firstDepth_ = 0;
    std::map<std::uint32_t, std::int32_t> otherDepths_;
    SecurityEveryone security_;
    OptionCache optionCache_;
};

// The "All" category: its option is a mask in force for every category.
LogCategory& allCategory();

}  // namespace vok
