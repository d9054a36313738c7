// How a BasicLogger turns a message into one line of its file.

#include <cstdio>

#include "logging/basic_logger.h"
#include "logging/log_category.h"
#include "logging/option_names.h"
#include "support/inter_process_lock.h"

namespace vok {

namespace {

// Characters of a record.
constexpr std::size_t usualLine = 250;

void appendPadded(std::string& line, unsigned long value, unsigned long radix, std::size_t width) {
    // As many as a 32-bit number has in radix 10.
    char digits[10];
    char* const end = digits + sizeof digits;
    char* first = end;
    do {
        *--first = "0123456789abcdef"[value % radix];
        value /= radix;
    } while (value != 0);
    const auto count = static_cast<std::size_t>(end - first);
    if (count < width) {
        line.append(width - count, '0');
    }
    line.append(first, count);
}

void appendClock(std::string& line) {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    const struct {
        WORD value;
        std::size_t width;
        char end;
    } fields[] = {{now.wYear, 4, '/'},        {now.wMonth, 2, '/'},  {now.wDay, 2, '-'},
                  {now.wHour, 2, ':'},        {now.wMinute, 2, ':'}, {now.wSecond, 2, '.'},
                  {now.wMilliseconds, 3, ' '}};
    for (const auto& field : fields) {
        appendPadded(line, field.value, 10, field.width);
        line += field.end;
    }
}

void appendId(std::string& line, const char* label, DWORD id) {
    line += label;
    appendPadded(line, id, 16, 4);
    line += ' ';
}

}  // namespace

void BasicLogger::write(const LogCategory* category, std::uint32_t level, const std::string& text) {
    write(category, level, text.c_str());
}

void BasicLogger::write(const LogCategory* category, std::uint32_t level, const char* text) {
    if (mutex_ == nullptr) {
        return;
    }
    const Header header = readHeader();
    const InterProcessLock lock(mutex_.get());
    formatLine(header, category, level, text);
    appendLine();
}

BasicLogger::Header BasicLogger::readHeader() {
    Header header;
    getCachedOption(optionClock, &header.clock, 1, optionAge);
    getCachedOption(optionProcessId, &header.processId, 0, optionAge);
    getCachedOption(optionThreadId, &header.threadId, 0, optionAge);
    return header;
}

void BasicLogger::formatLine(const Header& header, const LogCategory* category, std::uint32_t level,
                             const char* text) {
    std::string& line = line_;
    line.reserve(usualLine);
    line = linePrefix(category, level, text);
    if (header.clock != 0) {
        appendClock(line);
    }
    if (header.processId != 0) {
        appendId(line, "pid=", GetCurrentProcessId());
    }
    const DWORD threadId = GetCurrentThreadId();
    if (header.threadId != 0) {
        appendId(line, "tid=", threadId);
    }
    const std::string name = category->name();
    line += name;
    if (name.size() < categoryWidth_) {
        line.append(categoryWidth_ - name.size(), ' ');
    }
    line += ' ';
    const std::int32_t depth = getDepth(threadId);
    if (depth > 0) {
        line.append(static_cast<std::size_t>(depth), ' ');
    }
    line += text;
    line += lineSuffix(category, level, text);
    line += "\r\n";
}

void BasicLogger::appendLine() {
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
    WriteFile(file, line_.data(), static_cast<DWORD>(line_.size()), &written, nullptr);
    CloseHandle(file);
}

HANDLE BasicLogger::openLogFile(DWORD disposition) {
    return CreateFileA(logPath_.c_str(), GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, security_.getAttributes(), disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace vok
