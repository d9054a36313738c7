#include "text.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cwchar>
#include <locale>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace vok::log {

namespace {

constexpr char32_t replacement = 0xFFFD;

// What Windows-1252 has where Latin-1 has control characters.
constexpr std::array<char32_t, 32> windows1252 = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

using Utf8 = std::codecvt<char32_t, char8_t, std::mbstate_t>;

const Utf8& utf8() {
    return std::use_facet<Utf8>(std::locale::classic());
}

void appendUtf8(std::string& out, char32_t code) {
    std::mbstate_t state = {};
    std::array<char8_t, 4> bytes = {};
    const char32_t* read = nullptr;
    char8_t* written = nullptr;
    utf8().out(state, &code, &code + 1, read, bytes.data(), bytes.data() + bytes.size(), written);
    out.append(bytes.data(), written);
}

// Where each character begins.
std::vector<std::size_t> charactersOf(std::string_view text) {
    std::vector<std::size_t> begins;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            begins.push_back(i);
        }
    }
    return begins;
}

bool isUtf8(std::string_view text) {
    std::mbstate_t state = {};
    const auto* first = reinterpret_cast<const char8_t*>(text.data());
    const int valid = utf8().length(state, first, first + text.size(), text.size());
    return static_cast<std::size_t>(valid) == text.size();
}

}  // namespace

std::optional<std::int64_t> leadingNumber(std::string_view text) {
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::string codeText(std::string_view text) {
    const auto number = leadingNumber(text);
    return number ? fmt::format("code {}", *number) : std::string();
}

std::string toUtf8(std::string_view text) {
    if (isUtf8(text)) {
        return std::string(text);
    }
    std::string out;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        appendUtf8(out, code >= 0x80 && code < 0xA0 ? windows1252[code - 0x80u] : code);
    }
    return out;
}

void appendUtf16(std::string& out, char16_t unit, char16_t& first) {
    constexpr char16_t mark = 0xFEFF;
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

std::string shortened(const std::string& text, std::size_t characters) {
    if (text.size() <= characters) {
        return text;
    }
    const std::vector<std::size_t> begins = charactersOf(text);
    return begins.size() <= characters ? text : text.substr(0, begins[characters - 1]) + "…";
}

std::string shortenedBefore(const std::string& text, std::size_t characters) {
    const std::vector<std::size_t> begins = charactersOf(text);
    return begins.size() <= characters ? text
                                       : "…" + text.substr(begins[begins.size() + 1 - characters]);
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
        const std::int64_t tenths = (milliseconds + 50) / 100;
        return fmt::format("{}.{} s", tenths / 10, tenths % 10);
    }
    // An hour by which a clock was set is some milliseconds less by the tick counts.
    const std::int64_t seconds = (milliseconds + 500) / 1000;
    if (seconds < 3600) {
        return fmt::format("{} min {} s", seconds / 60, seconds % 60);
    }
    return fmt::format("{} h {} min", seconds / 3600, seconds % 3600 / 60);
}

std::string grouped(std::uint64_t number) {
    return fmt::format("{}", fmt::group_digits(number));
}

}  // namespace vok::log
