#include "logging/basic_logger.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "logging/option_names.h"
#include "support/exception.h"
#include "support/inter_process_lock.h"

namespace vok {

namespace {

constexpr const char* mutexPrefix = "ZELOG_";
constexpr DWORD pathBufferSize = 261;
// Drive letter, colon, backslash.
constexpr std::size_t driveRootLength = 3;

LogCategory all(optionAll, LEVEL_ALL);

// The value last read for the "All" option, by whichever logger. Nothing else hangs on it.
std::atomic<std::uint32_t> allMask = 0;

// A logger's mutex could not be set up. Never cleared.
std::atomic<bool> loggingFailed = false;

std::string pathOf(const char* logName) {
    if (std::strchr(logName, '\\') != nullptr) {
        return logName;
    }
    char buffer[pathBufferSize] = {};
    const UINT length = GetWindowsDirectoryA(buffer, pathBufferSize);
    if (length == 0 || length > pathBufferSize - 1) {
        std::strcpy(buffer, "c:\\");
    }
    std::string path(buffer, strnlen(buffer, driveRootLength));
    if (path.size() == driveRootLength) {
        // What would not have fitted into the buffer is cut.
        path.append(logName, strnlen(logName, pathBufferSize - 1 - driveRootLength));
    }
    return path;
}

}  // namespace

LogCategory& allCategory() {
    return all;
}

BasicLogger::BasicLogger(const char* logName, std::uint32_t categoryWidth)
    : categoryWidth_(categoryWidth), security_(false) {
    try {
        mutex_.emplace(false, mutexNameFor(logName), true);
        logPath_ = pathOf(logName);
    } catch (const Win32Exception&) {
        loggingFailed = true;
    }
}

// The mutex goes before the security descriptor, whatever the order of the members.
BasicLogger::~BasicLogger() {
    mutex_.reset();
}

InlineText<BasicLogger::usualMutexName> BasicLogger::mutexNameFor(const char* logName) {
    const char* lastBackslash = std::strrchr(logName, '\\');
    const char* fileName = lastBackslash == nullptr ? logName : lastBackslash + 1;
    return {mutexPrefix, fileName};
}

std::shared_ptr<BasicLogger> BasicLogger::getInstance() {
    return loggerInUse().logger;
}

bool BasicLogger::isEnabled(const LogCategory* category, std::uint32_t level) {
    if (loggingFailed) {
        return false;
    }
    if ((level & LEVEL_CRITICAL) != 0) {
        return true;
    }
    std::uint32_t start = 0;
    getKnownOption(OptionCache::start, &start, 0);
    if (start == 0) {
        return false;
    }
    std::uint32_t commonMask = allMask.load(std::memory_order_relaxed);
    getKnownOption(OptionCache::all, &commonMask, all.defaultMask());
    allMask.store(commonMask, std::memory_order_relaxed);
    std::uint32_t mask = 0;
    getCachedOption(category->name().c_str(), &mask, category->defaultMask(), optionAge);
    return (level & (commonMask | mask)) != 0;
}

void BasicLogger::getCachedOption(const char* name, std::uint32_t* value,
                                  std::uint32_t defaultValue, std::uint32_t maxAgeMs) {
    readThrough(optionCache_.at(name), name, value, defaultValue, maxAgeMs);
}

void BasicLogger::getKnownOption(OptionCache::Known option, std::uint32_t* value,
                                 std::uint32_t defaultValue) {
    readThrough(optionCache_.at(option), OptionCache::nameOf(option), value, defaultValue,
                optionAge);
}

void BasicLogger::readThrough(OptionCache::Entry& entry, const char* name, std::uint32_t* value,
                              std::uint32_t defaultValue, std::uint32_t maxAgeMs) {
    const std::uint32_t now = GetTickCount();
    const OptionReading last = entry.load(std::memory_order_relaxed);
    if (last.isFresh(now, maxAgeMs)) {
        *value = last.value;
        return;
    }
    getOption(name, value, defaultValue);
    entry.store({*value, now}, std::memory_order_relaxed);
}

void BasicLogger::increaseDepth() {
    addDepth(GetCurrentThreadId(), 1);
}

void BasicLogger::decreaseDepth() {
    addDepth(GetCurrentThreadId(), -1);
}

std::int32_t BasicLogger::getDepth(std::uint32_t threadId) {
    return addDepth(threadId, 0);
}

std::int32_t BasicLogger::addDepth(std::uint32_t threadId, std::int32_t change) {
    const CriticalSectionLock lock(&depthLock_);
    if (!firstThread_) {
        firstThread_ = threadId;
    }
    std::int32_t& depth = *firstThread_ == threadId ? firstDepth_ : otherDepths_[threadId];
    return depth += change;
}

void BasicLogger::deleteLogFile() {
    if (!mutex_) {
        return;
    }
    const InterProcessLock lock(&*mutex_);
    DeleteFileA(logPath_.c_str());
}

void BasicLogger::getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue) {
    *value = defaultValue;
    if (std::strcmp(name, optionStart) != 0) {
        return;
    }
    std::FILE* file = std::fopen(logPath_.c_str(), "r");
    if (file == nullptr) {
        *value = 0;
        return;
    }
    static_cast<void>(std::fclose(file));
    *value = LEVEL_ALL;
}

void BasicLogger::onLogFileMissing() {}

std::string BasicLogger::linePrefix(const LogCategory*, std::uint32_t, const char*) {
    return {};
}

std::string BasicLogger::lineSuffix(const LogCategory*, std::uint32_t, const char*) {
    return {};
}

const LogCategory* BasicLogger::messageCategory() const {
    return nullptr;
}

}  // namespace vok
