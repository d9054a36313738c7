// The options of the log: what each means, and what --log writes.
#ifndef VOK_TOOLS_DOCTOR_LOG_OPTIONS_H
#define VOK_TOOLS_DOCTOR_LOG_OPTIONS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "command_line.h"

namespace vok::doctor {

struct LogOption {
    const char* name;
    std::uint32_t standard;            // what the library takes and writes where there is none
    std::optional<std::uint32_t> on;   // what --log on writes; none: leaves it
    std::optional<std::uint32_t> all;  // what --log all writes
    std::string (*meaning)(std::uint32_t value);
};

inline constexpr std::size_t logOptionCount = 7;

// In the order in which the library asks for them.
const std::array<LogOption, logOptionCount>& logOptions();

// What the setting writes for the option; nothing when it leaves it alone.
std::optional<std::uint32_t> valueFor(const LogOption& option, LogSetting setting);

// "0x0000000B".
std::string hex(std::uint32_t value);

}  // namespace vok::doctor

#endif
