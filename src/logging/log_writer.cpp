// How a BasicLogger turns a message into one line of its file.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "logging/basic_logger.h"
#include "logging/log_category.h"
#include "support/inter_process_lock.h"

namespace vok {

namespace {

// What a record's header can need at most, with the fields as wide as their types allow: seven
// numbers of five digits with what ends them, and two of eight hexadecimal ones with their labels.
constexpr std::size_t headerSize = 7 * 6 + 2 * 13;

constexpr char hexDigits[] = "0123456789abcdef";

// Each writes to `end` and returns the new end.

char* appendNumber(char* end, unsigned value, unsigned radix) {
    // As many as a 32-bit number has in radix 10.
    char digits[10];
    int count = 0;
    do {
        digits[count++] = hexDigits[value % radix];
        value /= radix;
    } while (value != 0);
    return std::reverse_copy(digits, digits + count, end);
}

// The last `width` digits; returns what is left of the value.
template <unsigned radix, int width>
unsigned putDigits(char* to, unsigned value) {
    to[width - 1] = hexDigits[value % radix];
    if constexpr (width == 1) {
        return value / radix;
    } else {
        return putDigits<radix, width - 1>(to, value / radix);
    }
}

// At least `width` digits.
template <unsigned radix, int width>
char* appendPadded(char* end, unsigned value) {
    return putDigits<radix, width>(end, value) == 0 ? end + width : appendNumber(end, value, radix);
}

template <int width>
char* appendField(char* end, WORD value, char after) {
    end = appendPadded<10, width>(end, value);
    *end = after;
    return end + 1;
}

char* appendClock(char* end) {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    end = appendField<4>(end, now.wYear, '/');
    end = appendField<2>(end, now.wMonth, '/');
    end = appendField<2>(end, now.wDay, '-');
    end = appendField<2>(end, now.wHour, ':');
    end = appendField<2>(end, now.wMinute, ':');
    end = appendField<2>(end, now.wSecond, '.');
    return appendField<3>(end, now.wMilliseconds, ' ');
}

char* appendId(char* end, const char (&label)[5], DWORD id) {
    end = appendPadded<16, 4>(std::copy_n(label, sizeof label - 1, end), id);
    *end++ = ' ';
    return end;
}

}  // namespace

void BasicLogger::write(const LogCategory* category, std::uint32_t level, const std::string& text) {
    write(category, level, text.c_str());
}

void BasicLogger::write(const LogCategory* category, std::uint32_t level, const char* text) {
    if (!mutex_) {
        return;
    }
    const Header header = readHeader();
    const InterProcessLock lock(&*mutex_);
    Line line;
    formatLine(line, header, category, level, text);
    appendLine(line);
}

BasicLogger::Header BasicLogger::readHeader() {
    Header header;
    getKnownOption(OptionCache::clock, &header.clock, 1);
    getKnownOption(OptionCache::processId, &header.processId, 0);
    getKnownOption(OptionCache::threadId, &header.threadId, 0);
    return header;
}

void BasicLogger::formatLine(Line& line, const Header& header, const LogCategory* category,
                             std::uint32_t level, const char* text) {
    line.append(linePrefix(category, level, text));
    char fields[headerSize];
    char* end = fields;
    if (header.clock != 0) {
        end = appendClock(end);
    }
    if (header.processId != 0) {
        end = appendId(end, "pid=", GetCurrentProcessId());
    }
    const DWORD threadId = GetCurrentThreadId();
    if (header.threadId != 0) {
        end = appendId(end, "tid=", threadId);
    }
    line.append({fields, static_cast<std::size_t>(end - fields)});
    const std::string& name = category->name();
    line.append(name);
    const std::size_t padding = categoryWidth_ - std::min<std::size_t>(name.size(), categoryWidth_);
    const std::int32_t depth = std::max(getDepth(threadId), 0);
    line.append(padding + 1 + static_cast<std::size_t>(depth), ' ');
    line.append(text).append(lineSuffix(category, level, text)).append("\r\n");
}

void BasicLogger::appendLine(std::string_view line) {
    const HANDLE existing = openLogFile(OPEN_EXISTING);
    if (existing == INVALID_HANDLE_VALUE) {
        onLogFileMissing();
    }
    CloseHandle(existing);

    const HANDLE file = openLogFile(OPEN_ALWAYS);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    DWORD highSize = 0;
    const DWORD size = GetFileSize(file, &highSize);
    SetFilePointer(file, static_cast<LONG>(size), nullptr, FILE_BEGIN);
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
}

HANDLE BasicLogger::openLogFile(DWORD disposition) {
    return CreateFileA(logPath_.c_str(), GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, security_.getAttributes(), disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace vok
