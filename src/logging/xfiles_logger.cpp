#include "logging/xfiles_logger.h"

#include <vok/config_library.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "logging/critical_log.h"
#include "logging/logger_slot.h"
#include "logging/option_names.h"
#include "support/config_library.h"
#include "support/critical_section.h"
#include "support/exception.h"
#include "support/registry_key64.h"
#include "support/text.h"

namespace vok {

namespace {

constexpr std::uint32_t xfilesCategoryWidth = 10;
constexpr std::uint32_t commonLogOn = 1;
// ".log"
constexpr std::size_t endingLength = 4;

// What lives longer than a logger. All of it is guarded by createLock.
struct State {
    CriticalSection createLock;
    bool created = false;
    std::int32_t refCount = 0;
    // Grows with every call and is never reset: the first critical record of the process binds
    // the name of the critical log, so that its length tells how many calls came before.
    std::string criticalLogName;
};

State state;

// The key of the options, created if it is missing. The base key must be there.
RegistryKey64 openLoggerKey(const OptionKeys& keys) {
    {
        const RegistryKey64 base(keys.base.c_str(), false, HKEY_LOCAL_MACHINE);
    }
    return RegistryKey64(keys.logger.c_str(), true, HKEY_LOCAL_MACHINE);
}

void reportRegistryFailure(const char* operation, const Win32Exception& failure) {
    const std::string name = [] {
        const CriticalSectionLock lock(&state.createLock);
        return state.criticalLogName;
    }();
    CriticalLog(name, operation,
                "RegistryKey64() exception error=" +
                    toString(static_cast<unsigned long>(failure.getErrorCode()), 10),
                nullptr);
}

void growCriticalLogName(const std::string& namePrefix, const std::string& logFileName) {
    std::string& name = state.criticalLogName;
    name += namePrefix;
    name += logFileName;
    const std::size_t ending = name.rfind('.');
    if (ending != std::string::npos) {
        name.erase(ending, endingLength);
    }
}

// Reads the option after making sure that it is there as 0 or 1.
std::uint32_t readCommonLog(const OptionKeys& keys) {
    std::uint32_t commonLog = 0;
    try {
        const RegistryKey64 key = openLoggerKey(keys);
        key.getValue(optionCommonLog, &commonLog);
        if (commonLog != commonLogOn) {
            key.setValue(optionCommonLog, 0);
        }
        key.getValue(optionCommonLog, &commonLog);
        return commonLog;
    } catch (const Win32Exception& failure) {
        reportRegistryFailure("XFilesLogger::CreateInstance()", failure);
        return 0;
    }
}

// The configuration library is loaded only for as long as a logger is being made.
class ConfigLibraryUse {
  public:
    explicit ConfigLibraryUse(const std::string& namePrefix)
        : module_(getConfigLibrary(namePrefix)) {}
    ~ConfigLibraryUse() { releaseConfigLibrary(); }
    ConfigLibraryUse(const ConfigLibraryUse&) = delete;
    ConfigLibraryUse& operator=(const ConfigLibraryUse&) = delete;

    bool readBasePath(std::string& path) const {
        return module_ != nullptr &&
               getConfigData(*module_, 0, VOK_CONFIG_REGISTRY_BASE, 0, path) == 0;
    }

  private:
    Module* module_;
};

void create(const std::string& logFileName, const LogCategory& category, const std::string& appName,
            const std::string& namePrefix, std::int32_t mode) {
    const ConfigLibraryUse config(namePrefix);
    std::string basePath;
    if (!config.readBasePath(basePath)) {
        return;
    }
    const OptionKeys keys = optionKeys(basePath, appName);
    const std::string logName =
        logNameFor(readCommonLog(keys), mode, logFileName, appName, namePrefix);
    auto logger = std::make_shared<XFilesLogger>(logName.c_str(), category, keys);
    // Created counts whether the slot takes the logger or has one already, which then stays in use.
    state.created = true;
    loggerSlot().install(std::move(logger));
}

}  // namespace

OptionKeys optionKeys(std::string_view basePath, std::string_view appName) {
    return {{basePath}, {basePath, "\\", appName, "\\Logger"}};
}

std::string logNameFor(std::uint32_t commonLog, std::int32_t mode, const std::string& logFileName,
                       const std::string& appName, const std::string& namePrefix) {
    const std::string name = commonLog == commonLogOn ? appName + ".log" : logFileName;
    return mode == prefixedNameMode ? namePrefix + name : name;
}

XFilesLogger::XFilesLogger(const char* logName, const LogCategory& category, const OptionKeys& keys)
    : BasicLogger(logName, xfilesCategoryWidth), category_(category), keys_(keys) {}

XFilesLogger::~XFilesLogger() = default;

void XFilesLogger::CreateInstance(const std::string& logFileName, const LogCategory& category,
                                  const std::string& appName, const std::string& namePrefix,
                                  std::int32_t mode) {
    const CriticalSectionLock lock(&state.createLock);
    growCriticalLogName(namePrefix, logFileName);
    if (!state.created) {
        create(logFileName, category, appName, namePrefix, mode);
    }
    if (state.created) {
        ++state.refCount;
    }
}

void XFilesLogger::release() {
    const CriticalSectionLock lock(&state.createLock);
    --state.refCount;
    if (state.refCount == 0 && state.created) {
        loggerSlot().clear();
        state.created = false;
    }
}

void XFilesLogger::getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue) {
    try {
        const RegistryKey64 key = openLoggerKey(keys_);
        if (!key.getValue(name, value)) {
            key.setValue(name, defaultValue);
            *value = defaultValue;
        }
    } catch (const Win32Exception& failure) {
        reportRegistryFailure("XFilesLogger::getOption()", failure);
    }
}

}  // namespace vok
