// Where the installed logger is kept.
#ifndef VOK_LOGGING_LOGGER_SLOT_H
#define VOK_LOGGING_LOGGER_SLOT_H

#include <memory>

#include "support/critical_section.h"

namespace vok {

class BasicLogger;
class LogCategory;

// A logger and the category of its creator. Whoever is about to use them takes a copy and holds
// it meanwhile, so that a release on another thread never takes away what is in use.
struct LoggerInUse {
    std::shared_ptr<BasicLogger> logger;
    std::shared_ptr<LogCategory> category;
};

class LoggerSlot {
  public:
    // What is there now; either may be null.
    LoggerInUse use() const;

    // The category under which message lines are written; null for none.
    void setCategory(std::shared_ptr<LogCategory> category);

    // False, with nothing changed, when a logger is installed already.
    bool install(std::shared_ptr<BasicLogger> logger);

    // Takes out both. The logger is destroyed when nobody uses it any more.
    void clear();

  private:
    mutable CriticalSection lock_;
    LoggerInUse current_;
};

// The process's one slot.
LoggerSlot& loggerSlot();

// The installed logger and its category, both there. Throws Win32Exception when none is installed.
LoggerInUse loggerInUse();

}  // namespace vok

#endif
