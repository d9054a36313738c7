// One line of a log file, taken apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vok::log {

// Milliseconds of the writer's local time since 1970; noTime where a record has no clock.
using Time = std::int64_t;
constexpr Time noTime = INT64_MIN;

// A record as the library's log writer forms it. The texts point into the line.
struct Record {
    std::uint64_t line = 0;  // its number, where it is known
    Time time = noTime;
    std::optional<std::uint32_t> processId;
    std::optional<std::uint32_t> threadId;
    std::string_view text;  // all of it
    std::string_view category;
    std::string_view message;

    // Written by the library, not by another program.
    bool isOwn() const;
};

// A time as the log writes it, or its beginning ("2024/03/07-09:05"); other signs between the
// numbers will do. noTime for anything else.
Time timeIn(std::string_view text);

enum class LineKind {
    Record,
    Torn,     // a record that was cut, or the part of one that another ran into
    Foreign,  // no record at all
};

struct Line {
    LineKind kind = LineKind::Foreign;
    Record record;
    // What follows a torn record on the same line, from the next clock on; else empty.
    std::string_view rest;
};

// Takes a line without its end apart.
Line parseLine(std::string_view text);

}  // namespace vok::log
