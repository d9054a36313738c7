#include "logging/basic_logger.h"

#include <atomic>
#include <cstdio>
#include <cstring>

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
// As many as most calls ask for.
constexpr std::size_t usualOptions = 6;
// Drive letter, colon, backslash.
constexpr std::size_t driveRootLength = 3;

LogCategory all(optionAll, LEVEL_ALL);

// The value last read for the "All" option, by whichever logger.
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
    std::strncpy(buffer + driveRootLength, logName, pathBufferSize - 1 - driveRootLength);
    buffer[pathBufferSize - 1] = '\0';
    return buffer;
}

}  // namespace

LogCategory& allCategory() {
    return all;
}

BasicLogger::BasicLogger(const char* logName, std::uint32_t categoryWidth)
    : categoryWidth_(categoryWidth), security_(false) {
    optionCache_.reserve(usualOptions);
    try {
        mutex_ = std::make_unique<Mutex>(false, mutexNameFor(logName), true);
        logPath_ = pathOf(logName);
    } catch (const Win32Exception&) {
        loggingFailed = true;
    }
}

// The mutex goes before the security descriptor, whatever the order of the members.
BasicLogger::~BasicLogger() {
    optionCache_.clear();
    mutex_.reset();
}

std::string BasicLogger::mutexNameFor(const char* logName) {
    const char* lastBackslash = std::strrchr(logName, '\\');
    const char* fileName = lastBackslash == nullptr ? logName : lastBackslash + 1;
    return std::string(mutexPrefix) + fileName;
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
    getCachedOption(optionStart, &start, 0, optionAge);
    if (start == 0) {
        return false;
    }
    std::uint32_t commonMask = allMask;
    getCachedOption(optionAll, &commonMask, all.defaultMask(), optionAge);
    allMask = commonMask;
    std::uint32_t mask = 0;
    getCachedOption(category->name().c_str(), &mask, category->defaultMask(), optionAge);
    return (level & (commonMask | mask)) != 0;
}

void BasicLogger::getCachedOption(const char* name, std::uint32_t* value,
                                  std::uint32_t defaultValue, std::uint32_t maxAgeMs) {
    const std::uint32_t now = GetTickCount();
    if (readFromCache(name, now, maxAgeMs, value)) {
        return;
    }
    // Not under the lock: it reads the registry.
    getOption(name, value, defaultValue);
    storeInCache(name, now, *value);
}

BasicLogger::CachedOption* BasicLogger::findOption(const char* name) {
    for (CachedOption& option : optionCache_) {
        if (option.name == name) {
            return &option;
        }
    }
    return nullptr;
}

bool BasicLogger::readFromCache(const char* name, std::uint32_t now, std::uint32_t maxAgeMs,
                                std::uint32_t* value) {
    const CriticalSectionLock lock(&optionLock_);
    const CachedOption* option = findOption(name);
    if (option == nullptr || now <= option->stamp || now - option->stamp >= maxAgeMs) {
        return false;
    }
    *value = option->value;
    return true;
}

void BasicLogger::storeInCache(const char* name, std::uint32_t now, std::uint32_t value) {
    const CriticalSectionLock lock(&optionLock_);
    CachedOption* option = findOption(name);
    if (option == nullptr) {
        option = &optionCache_.emplace_back(CachedOption{name, 0, 0});
    }
    option->value = value;
    option->stamp = now;
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
    return depthByThread_[threadId] += change;
}

void BasicLogger::deleteLogFile() {
    if (mutex_ == nullptr) {
        return;
    }
    const InterProcessLock lock(mutex_.get());
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

}  // namespace vok
