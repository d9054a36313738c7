// The level bits of log records.
#pragma once

#include <cstdint>

namespace vok {

// A record is written when its level shares a bit with the mask in force.
enum Level : std::uint32_t {
    LEVEL_CRITICAL = 1,  // written whatever the options say
    LEVEL_TRACE = 2,     // entry and exit of functions
    LEVEL_4 = 4,
    LEVEL_DETAIL = 8,  // ordinary message lines
    LEVEL_16 = 16,
    LEVEL_ALL = 0xFFFFFFFF,
};

}  // namespace vok
