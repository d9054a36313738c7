// The options of the log in the registry, and the file it is written to.

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "common/system_text.h"
#include "examination.h"
#include "log_options.h"
#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/option_names.h"
#include "logging/xfiles_logger.h"
#include "program_file.h"
#include "support/exception.h"
#include "support/mutex.h"
#include "support/registry_key64.h"

namespace vok::doctor {

namespace {

constexpr std::uint32_t columns = 10;
constexpr std::int32_t prefixedName = 1;

std::string stepOf(const LogOption& option) {
    return std::string("option ") + option.name;
}

// Null, with no finding, when the library has not made the key yet.
std::unique_ptr<RegistryKey64> openOptions(const Examination& examination) {
    try {
        return std::make_unique<RegistryKey64>(
            optionKeys(examination.basePath, exportAppName).logger.c_str(), false,
            HKEY_LOCAL_MACHINE);
    } catch (const Win32Exception&) {
        return nullptr;
    }
}

void writeOptions(Examination& examination) {
    const LogSetting setting = examination.options.log;
    try {
        const RegistryKey64 key(optionKeys(examination.basePath, exportAppName).logger.c_str(),
                                true, HKEY_LOCAL_MACHINE);
        for (const LogOption& option : logOptions()) {
            const auto value = valueFor(option, setting);
            if (value) {
                key.setValue(option.name, *value);
                examination.report.ok(stepOf(option),
                                      "set to " + hex(*value) + ": " + option.meaning(*value));
            }
        }
    } catch (const Win32Exception& failure) {
        examination.report.problem(
            "options", Trouble::BaseKeyAccess,
            failure.getMessage() + " " + tools::errorText(failure.getErrorCode()));
    }
}

// The option's value as the library would take it; the default, with the finding made, when it
// can't be read.
std::uint32_t readOption(Examination& examination, const RegistryKey64* key,
                         const LogOption& option) {
    std::uint32_t value = option.standard;
    std::string origin = "not set, so ";
    try {
        if (key != nullptr && key->getValue(option.name, &value)) {
            origin.clear();
        }
    } catch (const Win32Exception& failure) {
        examination.report.problem(
            stepOf(option), Trouble::OptionType,
            failure.getMessage() + ", result " + std::to_string(failure.getErrorCode()));
        return value;
    }
    const std::string text = origin + hex(value) + ": " + option.meaning(value);
    if (std::string(option.name) == optionStart && value == 0) {
        examination.report.note(stepOf(option), Trouble::LogOff, text);
    } else {
        examination.report.ok(stepOf(option), text);
    }
    return value;
}

void checkMasks(Examination& examination, std::uint32_t mask) {
    constexpr std::uint32_t wanted = LEVEL_TRACE | LEVEL_DETAIL;
    if ((mask & wanted) != wanted) {
        examination.report.problem(
            "options", Trouble::LogMasked,
            "both masks together, " + hex(mask) + ", leave out calls or messages");
    }
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

// The library counts the file's length in 31 bits: beyond, it writes over what is there.
void checkSize(Examination& examination, const std::string& path) {
    constexpr std::uint64_t mebibyte = 1 << 20;
    constexpr std::uint64_t largest = 2048 * mebibyte;
    constexpr std::uint64_t soonTooLarge = largest / 8 * 7;
    const std::uint64_t size = sizeOf(path).value_or(0);
    const std::string text = path + " has " + std::to_string(size / mebibyte) + " MiB";
    if (size < soonTooLarge) {
        examination.report.ok("log file", text + " and can be written");
        return;
    }
    examination.report.complain(
        size >= largest && examination.logging, "log file", Trouble::LogTooLarge,
        text + (size < largest ? ": from 2048 MiB on records are written over older ones"
                               : ": records are written over older ones in it"));
}

void checkFile(Examination& examination, const std::string& path) {
    constexpr const char* step = "log file";
    const DWORD error = tryToOpen(path, GENERIC_READ | GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL);
    if (error == ERROR_SUCCESS) {
        checkSize(examination, path);
        return;
    }
    if (error != ERROR_FILE_NOT_FOUND) {
        examination.report.problem(step, Trouble::LogNotWritable,
                                   path + ": " + tools::errorText(error));
        return;
    }
    const std::string folder = tools::folderOf(path) + "\\";
    const DWORD folderError = tryToOpen(folder, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
    if (folderError != ERROR_SUCCESS) {
        examination.report.problem(step, Trouble::LogNotWritable,
                                   path + " is not there and can't be made in " + folder + ": " +
                                       tools::errorText(folderError));
        return;
    }
    examination.report.ok(step, path + " is not there yet; it can be made");
}

void checkMutex(Examination& examination, const std::string& mutexName) {
    constexpr const char* step = "log mutex";
    constexpr std::uint32_t patience = 2000;
    try {
        Mutex mutex(false, mutexName, true);
        if (mutex.acquire(patience)) {
            mutex.release();
            examination.report.ok(step, mutexName + " is free");
            return;
        }
        examination.report.problem(
            step, Trouble::LogLocked,
            mutexName + " has been held for " + std::to_string(patience) + " ms");
    } catch (const Win32Exception& failure) {
        examination.report.problem(step, Trouble::LogLocked,
                                   mutexName + ": " + failure.getMessage() + " " +
                                       tools::errorText(failure.getErrorCode()));
    }
}

}  // namespace

void examineOptions(Examination& examination) {
    const bool wanted = examination.options.log != LogSetting::Leave;
    if (examination.basePath.empty()) {
        if (wanted) {
            examination.report.problem("options", Trouble::OptionsNotSet,
                                       "none was set: it is not certain in which key they belong");
        }
        return;
    }
    if (wanted) {
        writeOptions(examination);
    }
    const std::unique_ptr<RegistryKey64> key = openOptions(examination);
    std::map<std::string, std::uint32_t> values;
    for (const LogOption& option : logOptions()) {
        values[option.name] = readOption(examination, key.get(), option);
    }
    examination.commonLog = values[optionCommonLog];
    examination.logging = values[optionStart] != 0;
    if (examination.logging) {
        checkMasks(examination, values[optionAll] | values[exportCategory]);
    }
}

void examineLog(Examination& examination) {
    if (examination.prefix.empty()) {
        return;
    }
    const std::string name = logNameFor(examination.commonLog, prefixedName, exportLogFile,
                                        exportAppName, examination.prefix);
    try {
        const BasicLogger logger(name.c_str(), columns);
        if (!logger.logPath().empty()) {
            checkFile(examination, logger.logPath());
        }
    } catch (const Win32Exception& failure) {
        examination.report.problem(
            "log file", Trouble::LogNotWritable,
            failure.getMessage() + " " + tools::errorText(failure.getErrorCode()));
    }
    checkMutex(examination, BasicLogger::mutexNameFor(name.c_str()).c_str());
}

}  // namespace vok::doctor
