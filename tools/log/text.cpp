#include "text.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace vok::log {

namespace {

// What Windows-1252 has where Latin-1 has control characters; 0 where it has nothing.
constexpr std::array<char32_t, 32> windows1252 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code >= 0x10000) {
        out += static_cast<char>(0xF0 | code >> 18);
        out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The length of the UTF-8 sequence that the text begins with; 0 for none.
std::size_t sequenceLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text[i])) {
            return 0;
        }
    }
    const auto second = length > 2 ? static_cast<unsigned char>(text[1]) : 0x80;
    const bool tooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool outside = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return tooLong || outside ? 0 : length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

std::optional<std::int64_t> leadingNumber(std::string_view text) {
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::string toUtf8(std::string_view text) {
    if (isUtf8(text)) {
        return std::string(text);
    }
    constexpr char32_t replacement = 0xFFFD;
    std::string out;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        const bool moved = code >= 0x80 && code < 0xA0;
        const char32_t character = moved ? windows1252[code - 0x80u] : code;
        appendUtf8(out, character == 0 && moved ? replacement : character);
    }
    return out;
}

void appendUtf16(std::string& out, char16_t unit, char16_t& first) {
    constexpr char16_t mark = 0xFEFF;
    constexpr char32_t replacement = 0xFFFD;
    const bool opens = unit >= 0xD800 && unit < 0xDC00;
    const bool closes = unit >= 0xDC00 && unit < 0xE000;
    const char16_t before = std::exchange(first, opens ? unit : u'\0');
    if (before != 0 && closes) {
        return appendUtf8(out, 0x10000 + ((before - 0xD800u) << 10) + (unit - 0xDC00u));
    }
    if (before != 0 || closes) {
        appendUtf8(out, replacement);
    }
    if (!opens && !closes && unit != mark) {
        appendUtf8(out, unit);
    }
}

std::string shortened(std::string text, std::size_t characters) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isContinuation(text[i]) && ++seen > characters) {
            // The last kept character makes room for the sign.
            do {
                --i;
            } while (i > 0 && isContinuation(text[i]));
            return text.substr(0, i) + "…";
        }
    }
    return text;
}

std::string shortenedBefore(const std::string& text, std::size_t characters) {
    std::size_t seen = 0;
    for (std::size_t i = text.size(); i > 0; --i) {
        if (!isContinuation(text[i - 1]) && ++seen == characters && i > 1) {
            while (i < text.size() && isContinuation(text[i])) {
                ++i;
            }
            return "…" + text.substr(i);
        }
    }
    return text;
}

std::string clockText(Time time) {
    using namespace std::chrono;
    if (time == noTime) {
        return {};
    }
    const sys_time<milliseconds> point{milliseconds(time)};
    const auto days = floor<std::chrono::days>(point);
    const year_month_day date(days);
    const hh_mm_ss clock(point - days);
    return fmt::format("{:04}/{:02}/{:02}-{:02}:{:02}:{:02}.{:03}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                       clock.subseconds().count());
}

std::string durationText(std::int64_t milliseconds) {
    if (milliseconds < 1000) {
        return fmt::format("{} ms", milliseconds);
    }
    if (milliseconds < 60000) {
        return fmt::format("{}.{} s", milliseconds / 1000, milliseconds % 1000 / 100);
    }
    const std::int64_t seconds = milliseconds / 1000;
    if (seconds < 3600) {
        return fmt::format("{} min {} s", seconds / 60, seconds % 60);
    }
    return fmt::format("{} h {} min", seconds / 3600, seconds % 3600 / 60);
}

std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t i = digits.size(); i > 3; i -= 3) {
        digits.insert(i - 3, 1, ',');
    }
    return digits;
}

}  // namespace vok::log
