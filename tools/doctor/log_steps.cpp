// The options of the log in the registry, and the file it is written to.

#include <fmt/format.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "common/system.h"
#include "examination.h"
#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/option_names.h"
#include "logging/xfiles_logger.h"
#include "support/mutex.h"
#include "support/registry_key64.h"

namespace vok::doctor {

namespace {

constexpr std::uint32_t columns = 10;
constexpr std::uint32_t messages = LEVEL_CRITICAL | LEVEL_TRACE | LEVEL_DETAIL;
constexpr std::nullopt_t none = std::nullopt;

struct LogOption {
    const char* name;
    std::uint32_t standard;  // what the library takes and writes where there is no value
    // What --log writes; none: it leaves the value.
    std::optional<std::uint32_t> on, off, all;
    // What one value means and all others do. Without such a value the option is a mask, and its
    // levels follow the other text.
    std::optional<std::uint32_t> special;
    const char* specialText;
    const char* otherText;

    std::string step() const { return std::string("option ") + name; }
};

// In the order in which the library asks for them.
constexpr LogOption logOptions[] = {
    {optionCommonLog, 0, none, none, none, 1, "all programs of the software write one file",
     "a file of its own"},
    {optionStart, 0, 1, 0, 1, 0, "logging is off, but for critical records", "logging is on"},
    {optionAll, LEVEL_ALL, none, none, LEVEL_ALL, none, "", "of every category: "},
    {exportCategory, LEVEL_CRITICAL, messages, none, LEVEL_ALL, none, "",
     "of this library, besides: "},
    {optionClock, 1, 1, none, 1, 0, "lines without the time", "lines with the time"},
    {optionProcessId, 0, 1, none, 1, 0, "lines without the process", "lines with the process"},
    {optionThreadId, 0, 1, none, 1, 0, "lines without the thread", "lines with the thread"},
};

// What --log writes for the option; none when it leaves it alone.
std::optional<std::uint32_t> valueFor(const LogOption& option, const std::string& setting) {
    if (setting == "default") {
        return option.standard;
    }
    return setting == "on" ? option.on : setting == "off" ? option.off : option.all;
}

std::string levelsIn(std::uint32_t mask) {
    const std::string text = bitNames(
        mask, {{LEVEL_CRITICAL, "critical"}, {LEVEL_TRACE, "calls"}, {LEVEL_DETAIL, "messages"}});
    return text.empty() ? "nothing" : text;
}

// "0x00000001: logging is on".
std::string explained(const LogOption& option, std::uint32_t value) {
    if (!option.special) {
        return fmt::format("0x{:08X}: {}{}", value, option.otherText, levelsIn(value));
    }
    return fmt::format("0x{:08X}: {}", value,
                       value == *option.special ? option.specialText : option.otherText);
}

void writeOptions(Examination& examination, const char* path) {
    try {
        const RegistryKey64 key(path, true, HKEY_LOCAL_MACHINE);
        for (const LogOption& option : logOptions) {
            const auto value = valueFor(option, examination.options.log);
            if (value) {
                key.setValue(option.name, *value);
                examination.step(option.step()).ok("set to {}", explained(option, *value));
            }
        }
    } catch (const Win32Exception& failure) {
        examination.step("options").problem("base-key-access", "{}", textOf(failure));
    }
}

// Null, with no finding, when the library has not made the key yet.
std::unique_ptr<RegistryKey64> openOptions(const char* path) {
    try {
        return std::make_unique<RegistryKey64>(path, false, HKEY_LOCAL_MACHINE);
    } catch (const Win32Exception&) {
        return nullptr;
    }
}

// The option's value as the library would take it; the default, with the finding made, when it
// can't be read.
std::uint32_t readOption(const Step& step, const RegistryKey64* key, const LogOption& option) {
    std::uint32_t value = option.standard;
    const char* origin = "not set, so ";
    try {
        if (key != nullptr && key->getValue(option.name, &value)) {
            origin = "";
        }
    } catch (const Win32Exception& failure) {
        step.problem("option-type", "{}, result {}", failure.getMessage(), failure.getErrorCode());
        return value;
    }
    if (std::string(option.name) == optionStart && value == 0) {
        step.note("log-off", "{}{}", origin, explained(option, value));
    } else {
        step.ok("{}{}", origin, explained(option, value));
    }
    return value;
}

// The file as the library opens it; one that is not there is not made.
DWORD tryToOpen(const std::string& path, DWORD access, DWORD flags) {
    const HANDLE file = CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    CloseHandle(file);
    return ERROR_SUCCESS;
}

// 0 when the system does not tell it.
std::uint64_t sizeOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
    return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

// The library counts the file's length in 31 bits: beyond, it writes over what is there.
void checkSize(const Step& step, const std::string& path, bool logging) {
    constexpr std::uint64_t mebibyte = 1 << 20;
    constexpr std::uint64_t largest = 2048 * mebibyte;
    constexpr std::uint64_t soonTooLarge = largest / 8 * 7;
    const std::uint64_t size = sizeOf(path);
    if (size < soonTooLarge) {
        step.ok("{} has {} MiB and can be written", path, size / mebibyte);
        return;
    }
    step.complain(size >= largest && logging, "log-too-large",
                  "{} has {} MiB: {}records are written over older ones{}", path, size / mebibyte,
                  size < largest ? "from 2048 MiB on " : "", size < largest ? "" : " in it");
}

void checkFile(const Step& step, const std::string& path, bool logging) {
    const std::string folder = tools::folderOf(path) + "\\";
    const DWORD error = tryToOpen(path, GENERIC_READ | GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL);
    if (error == ERROR_SUCCESS) {
        checkSize(step, path, logging);
    } else if (error != ERROR_FILE_NOT_FOUND) {
        step.problem("log-not-writable", "{}: {}", path, tools::errorText(error));
    } else if (const DWORD folderError =
                   tryToOpen(folder, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS)) {
        step.problem("log-not-writable", "{} is not there and can't be made in {}: {}", path,
                     folder, tools::errorText(folderError));
    } else {
        step.ok("{} is not there yet; it can be made", path);
    }
}

void checkMutex(const Step& step, const char* name) {
    constexpr std::uint32_t patience = 2000;
    try {
        Mutex mutex(false, name, true);
        if (mutex.acquire(patience)) {
            mutex.release();
            step.ok("{} is free", name);
        } else {
            step.problem("log-locked", "{} has been held for {} ms", name, patience);
        }
    } catch (const Win32Exception& failure) {
        step.problem("log-locked", "{}: {}", name, textOf(failure));
    }
}

}  // namespace

void examineOptions(Examination& examination) {
    const Step step = examination.step("options");
    const bool wanted = !examination.options.log.empty();
    if (examination.basePath.empty()) {
        if (wanted) {
            step.problem("options-not-set",
                         "none was set: it is not certain in which key they belong");
        }
        return;
    }
    const OptionKeys keys = optionKeys(examination.basePath, exportAppName);
    if (wanted) {
        writeOptions(examination, keys.logger.c_str());
    }
    const std::unique_ptr<RegistryKey64> key = openOptions(keys.logger.c_str());
    std::map<std::string, std::uint32_t> values;
    for (const LogOption& option : logOptions) {
        values[option.name] = readOption(examination.step(option.step()), key.get(), option);
    }
    examination.commonLog = values[optionCommonLog];
    examination.logging = values[optionStart] != 0;
    constexpr std::uint32_t needed = LEVEL_TRACE | LEVEL_DETAIL;
    const std::uint32_t mask = values[optionAll] | values[exportCategory];
    if (examination.logging && (mask & needed) != needed) {
        step.problem("log-masked", "both masks together, 0x{:08X}, leave out calls or messages",
                     mask);
    }
}

void examineLog(Examination& examination) {
    if (examination.prefix.empty()) {
        return;
    }
    const std::string name = logNameFor(examination.commonLog, prefixedNameMode, exportLogFile,
                                        exportAppName, examination.prefix);
    const Step step = examination.step("log file");
    try {
        const BasicLogger logger(name.c_str(), columns);
        if (!logger.logPath().empty()) {
            checkFile(step, logger.logPath(), examination.logging);
        }
    } catch (const Win32Exception& failure) {
        step.problem("log-not-writable", "{}", textOf(failure));
    }
    checkMutex(examination.step("log mutex"), BasicLogger::mutexNameFor(name.c_str()).c_str());
}

}  // namespace vok::doctor
