#include "logging/xfiles_logger.h"

#include <vok/config_library.h>

#include <utility>

#include "logging/critical_log.h"
#include "logging/log_category.h"
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
constexpr std::int32_t prefixedNameMode = 1;
// ".log"
constexpr std::size_t endingLength = 4;

// The registry paths, as an option look-up needs them.
struct OptionKeys {
    std::string base;
    std::string logger;
};

// What lives longer than a logger. All of it is guarded by createLock.
struct State {
    CriticalSection createLock;
    bool created = false;
    std::int32_t refCount = 0;
    // A look-up on another thread goes on with the paths that it has taken.
    std::shared_ptr<const OptionKeys> keys = std::make_shared<OptionKeys>();
    // Grows with every call and is never reset: the first critical record of the process binds
    // the name of the critical log, so that its length tells how many calls came before.
    std::string criticalLogName;
};

State state;

std::shared_ptr<const OptionKeys> optionKeys() {
    const CriticalSectionLock lock(&state.createLock);
    return state.keys;
}

// The base key must be there: nothing above it is created.
void requireBaseKey(const std::string& path) {
    const RegistryKey64 base(path, false, HKEY_LOCAL_MACHINE);
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
std::uint32_t readCommonLog() {
    std::uint32_t commonLog = 0;
    try {
        requireBaseKey(state.keys->base);
        const RegistryKey64 key(state.keys->logger, true, HKEY_LOCAL_MACHINE);
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
    state.keys =
        std::make_shared<OptionKeys>(OptionKeys{basePath, loggerKeyPath(basePath, appName)});
    const std::string logName = logNameFor(readCommonLog(), mode, logFileName, appName, namePrefix);
    auto logger =
        std::make_shared<XFilesLogger>(logName.c_str(), std::make_shared<LogCategory>(category));
    state.created = true;
    loggerSlot().install(std::move(logger));
    BasicLogger::getInstance();
}

}  // namespace

std::string loggerKeyPath(const std::string& basePath, const std::string& appName) {
    return basePath + "\\" + appName + "\\Logger";
}

std::string logNameFor(std::uint32_t commonLog, std::int32_t mode, const std::string& logFileName,
                       const std::string& appName, const std::string& namePrefix) {
    const std::string name = commonLog == commonLogOn ? appName + ".log" : logFileName;
    return mode == prefixedNameMode ? namePrefix + name : name;
}

XFilesLogger::XFilesLogger(const char* logName, std::shared_ptr<LogCategory> category)
    : BasicLogger(logName, xfilesCategoryWidth) {
    loggerSlot().setCategory(std::move(category));
}

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
        const std::shared_ptr<const OptionKeys> keys = optionKeys();
        requireBaseKey(keys->base);
        const RegistryKey64 key(keys->logger, true, HKEY_LOCAL_MACHINE);
        if (!key.getValue(name, value)) {
            key.setValue(name, defaultValue);
            *value = defaultValue;
        }
    } catch (const Win32Exception& failure) {
        reportRegistryFailure("XFilesLogger::getOption()", failure);
    }
}

}  // namespace vok
