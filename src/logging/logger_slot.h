// Where the installed logger is kept.
#pragma once

#include <atomic>
#include <memory>

namespace vok {

class BasicLogger;
class LogCategory;

// A logger and the category of its messages, which the logger owns. Whoever is about to use them
// takes a copy and holds it meanwhile, so that a release on another thread never takes away what is
// in use.
struct LoggerInUse {
    std::shared_ptr<BasicLogger> logger;
    // Null without a logger, and for one that takes no messages.
    const LogCategory* category = nullptr;
};

class LoggerSlot {
  public:
    // What is there now.
    LoggerInUse use() const;

    // False, with nothing changed, when a logger is installed already.
    bool install(std::shared_ptr<BasicLogger> logger);

    // The logger is destroyed when nobody uses it any more.
    void clear();

  private:
    std::atomic<std::shared_ptr<BasicLogger>> current_;
};

// The process's one slot.
LoggerSlot& loggerSlot();

// The installed logger and its category, both there. Throws Win32Exception when none is installed.
LoggerInUse loggerInUse();

}  // namespace vok
