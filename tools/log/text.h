// Small things about text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "record.h"

namespace vok::log {

// The decimal number that the text begins with.
std::optional<std::int64_t> leadingNumber(std::string_view text);

// "code 5" for a text that begins with 5; empty where there is no number.
std::string codeText(std::string_view text);

// Log text is in the writer's code page, which the log doesn't name: what is no UTF-8 is taken for
// Windows-1252.
std::string toUtf8(std::string_view text);

// Adds a unit of UTF-16 as UTF-8. The first unit of two is kept in `first` until the second comes;
// a mark at the beginning adds nothing.
void appendUtf16(std::string& out, char16_t unit, char16_t& first);

// Cuts at a whole character, with "…" for what is gone. The text is UTF-8.
std::string shortened(const std::string& text, std::size_t characters);
// The same with the end kept, which tells paths apart.
std::string shortenedBefore(const std::string& text, std::size_t characters);

// As the log writes it: "2024/03/07-09:05:01.042", empty for no time.
std::string clockText(Time time);

// "340 ms", "1.2 s", "2 min 5 s".
std::string durationText(std::int64_t milliseconds);

// "1,234,567".
std::string grouped(std::uint64_t number);

}  // namespace vok::log
