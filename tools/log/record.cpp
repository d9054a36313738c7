#include "record.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vok::log {

namespace {

// "2024/03/07-09:05:01.042"
constexpr std::string_view clockForm = "dddd/dd/dd-dd:dd:dd.ddd";
constexpr std::size_t libraryColumn = 10;
// Longest digits of an id: 32 bits in hexadecimal.
constexpr std::size_t longestId = 8;
constexpr std::string_view criticalCategory = "XFilesLogger::";
// The library's own category column, which no other text is likely to hold.
constexpr std::string_view ownColumn = "VOK        ";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isClockAt(std::string_view text, std::size_t position) {
    return std::ranges::equal(
        text.substr(position, clockForm.size()), clockForm,
        [](char found, char form) { return form == 'd' ? isDigit(found) : found == form; });
}

// Where a clock stands behind the first character, or npos.
std::size_t findClock(std::string_view text) {
    constexpr std::size_t yearDigits = 4;
    for (std::size_t slash = text.find('/', yearDigits + 1); slash != std::string_view::npos;
         slash = text.find('/', slash + 1)) {
        if (isClockAt(text, slash - yearDigits)) {
            return slash - yearDigits;
        }
    }
    return std::string_view::npos;
}

std::uint32_t number(std::string_view digits, int base = 10) {
    std::uint32_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    return value;
}

Time toTime(std::string_view clock) {
    using namespace std::chrono;
    const auto field = [&](std::size_t from, std::size_t count) {
        return number(clock.substr(from, count));
    };
    const year_month_day date{year(static_cast<int>(field(0, 4))), month(field(5, 2)),
                              day(field(8, 2))};
    const unsigned hour = field(11, 2);
    const unsigned minute = field(14, 2);
    const unsigned second = field(17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 60) {
        return noTime;
    }
    const auto days = sys_days(date).time_since_epoch();
    return duration_cast<milliseconds>(days).count() +
           ((hour * Time{60} + minute) * 60 + second) * 1000 + field(20, 3);
}

// Takes "pid=0a3c " or its like off the front. False when the label is there without its number.
bool takeId(std::string_view& text, std::string_view label, std::optional<std::uint32_t>& id) {
    if (!text.starts_with(label)) {
        return true;
    }
    const std::string_view rest = text.substr(label.size());
    const std::size_t digits = rest.find_first_not_of("0123456789abcdef");
    if (digits < 4 || digits > longestId || rest[digits] != ' ') {
        return false;
    }
    id = number(rest.substr(0, digits), 16);
    text = rest.substr(digits + 1);
    return true;
}

bool isPrintable(char character) {
    return static_cast<unsigned char>(character) > ' ' && character != '\x7f';
}

// Takes the category column and the indentation off the front.
bool takeCategory(std::string_view& text, bool behindHeader, std::string_view& category) {
    const std::size_t length = text.find(' ');
    if (length == 0 || length == std::string_view::npos) {
        return false;
    }
    category = text.substr(0, length);
    const std::size_t message = std::min(text.find_first_not_of(' ', length), text.size());
    const bool padded = length <= libraryColumn && message >= libraryColumn + 1;
    // Without a header only the column's form tells a record from any other text.
    const bool longName =
        length > libraryColumn && (behindHeader || category.starts_with(criticalCategory));
    if (!std::ranges::all_of(category, isPrintable) || (!padded && !longName)) {
        return false;
    }
    text.remove_prefix(message);
    return true;
}

LineKind kindOfBroken(std::string_view text, bool behindHeader) {
    const bool cutClock = text.find_first_not_of("0123456789") == 4 && text[4] == '/';
    const bool damaged = text.find('\0') != std::string_view::npos;
    return behindHeader || cutClock || damaged || text.find(ownColumn) != std::string_view::npos
               ? LineKind::Torn
               : LineKind::Foreign;
}

bool parseRecord(std::string_view text, Record& record, bool& behindHeader) {
    record.text = text;
    if (isClockAt(text, 0)) {
        behindHeader = true;
        record.time = toTime(text);
        text.remove_prefix(clockForm.size());
        if (record.time == noTime || !text.starts_with(' ')) {
            return false;
        }
        text.remove_prefix(1);
    }
    if (!takeId(text, "pid=", record.processId) || !takeId(text, "tid=", record.threadId)) {
        behindHeader = true;
        return false;
    }
    behindHeader = behindHeader || record.processId || record.threadId;
    if (!takeCategory(text, behindHeader, record.category)) {
        return false;
    }
    record.message = text;
    return text.find('\0') == std::string_view::npos;
}

}  // namespace

bool Record::isOwn() const {
    return category == "VOK" || category.starts_with(criticalCategory);
}

Time timeIn(std::string_view text) {
    constexpr std::string_view earliest = "0000/01/01-00:00:00.000";
    constexpr std::size_t shortest = 10;
    if (text.size() < shortest || text.size() > earliest.size()) {
        return noTime;
    }
    std::string clock(earliest);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDigit(text[i]) != (clockForm[i] == 'd')) {
            return noTime;
        }
        clock[i] = isDigit(text[i]) ? text[i] : clock[i];
    }
    return toTime(clock);
}

Line parseLine(std::string_view text) {
    Line line;
    const std::size_t next = findClock(text);
    const std::string_view first = text.substr(0, next);
    bool behindHeader = false;
    const bool whole = parseRecord(first, line.record, behindHeader);
    // What stands before a record whose head is whole need not be ours.
    line.kind = !whole                           ? kindOfBroken(first, behindHeader)
                : next == std::string_view::npos ? LineKind::Record
                                                 : LineKind::Torn;
    line.rest = text.substr(first.size());
    return line;
}

}  // namespace vok::log
