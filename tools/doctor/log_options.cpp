#include "log_options.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "logging/levels.h"
#include "logging/option_names.h"

namespace vok::doctor {

namespace {

constexpr std::uint32_t messages = LEVEL_CRITICAL | LEVEL_TRACE | LEVEL_DETAIL;

std::string commonLogMeaning(std::uint32_t value) {
    return value == 1 ? "all programs of the software write one file" : "a file of its own";
}

std::string startMeaning(std::uint32_t value) {
    return value == 0 ? "logging is off, but for critical records" : "logging is on";
}

std::string maskMeaning(std::uint32_t value) {
    std::string text;
    const struct {
        std::uint32_t bit;
        const char* name;
    } levels[] = {{LEVEL_CRITICAL, "critical"}, {LEVEL_TRACE, "calls"}, {LEVEL_DETAIL, "messages"}};
    for (const auto& level : levels) {
        if ((value & level.bit) != 0) {
            text += (text.empty() ? "" : ", ") + std::string(level.name);
        }
    }
    return text.empty() ? "nothing" : text;
}

std::string allMeaning(std::uint32_t value) {
    return "of every category: " + maskMeaning(value);
}

std::string categoryMeaning(std::uint32_t value) {
    return "of this library, besides: " + maskMeaning(value);
}

std::string clockMeaning(std::uint32_t value) {
    return value == 0 ? "lines without the time" : "lines with the time";
}

std::string processMeaning(std::uint32_t value) {
    return value == 0 ? "lines without the process" : "lines with the process";
}

std::string threadMeaning(std::uint32_t value) {
    return value == 0 ? "lines without the thread" : "lines with the thread";
}

}  // namespace

const std::array<LogOption, logOptionCount>& logOptions() {
    static const std::array<LogOption, logOptionCount> options = {{
        {optionCommonLog, 0, std::nullopt, std::nullopt, commonLogMeaning},
        {optionStart, 0, 1, 1, startMeaning},
        {optionAll, LEVEL_ALL, std::nullopt, LEVEL_ALL, allMeaning},
        {exportCategory, LEVEL_CRITICAL, messages, LEVEL_ALL, categoryMeaning},
        {optionClock, 1, 1, 1, clockMeaning},
        {optionProcessId, 0, 1, 1, processMeaning},
        {optionThreadId, 0, 1, 1, threadMeaning},
    }};
    return options;
}

std::optional<std::uint32_t> valueFor(const LogOption& option, LogSetting setting) {
    switch (setting) {
        case LogSetting::Leave:
            return std::nullopt;
        case LogSetting::On:
            return option.on;
        case LogSetting::Off:
            return std::strcmp(option.name, optionStart) == 0 ? std::optional<std::uint32_t>(0)
                                                              : std::nullopt;
        case LogSetting::All:
            return option.all;
        case LogSetting::Default:
            return option.standard;
    }
    return std::nullopt;
}

std::string hex(std::uint32_t value) {
    std::array<char, 16> text{};
    static_cast<void>(
        std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(value)));
    return text.data();
}

}  // namespace vok::doctor
