#include "support/exception.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <utility>

#include "support/text.h"

namespace vok {

namespace {

constexpr DWORD messageBufferSize = 256;
constexpr DWORD usEnglish = 0x409;

}  // namespace

Exception::Exception(std::string message, std::uint32_t errorCode, std::string sourceFile,
                     std::uint32_t line)
    : message_(std::move(message)),
      errorCode_(errorCode),
      sourceFile_(std::move(sourceFile)),
      line_(line) {}

Exception::~Exception() = default;

std::string Exception::getErrorText() const {
    return errorCode_ == 0 ? std::string() : toString(static_cast<unsigned long>(errorCode_), 10);
}

std::uint32_t Exception::getErrorCode() const {
    return errorCode_;
}

std::string Exception::getMessage() const {
    return message_;
}

std::string Win32Exception::getErrorText() const {
    const std::uint32_t code = getErrorCode();
    if (code == 0) {
        return {};
    }
    return "Win32(" + toString(static_cast<unsigned long>(code), 10) + systemMessage(code);
}

std::string systemMessage(std::uint32_t code) {
    char buffer[messageBufferSize] = {};
    if (FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                       usEnglish, buffer, messageBufferSize, nullptr) == 0) {
        const DWORD error = GetLastError();
        return "Error getting message:" + toString(error, 10);
    }
    buffer[messageBufferSize - 1] = '\0';
    std::string text = buffer;
    std::erase(text, '\r');  // NOLINT(misc-include-cleaner): the one of <string>
    std::erase(text, '\n');
    return text;
}

}  // namespace vok
