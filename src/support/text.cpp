#include "support/text.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace vok {

namespace {

// 32 binary digits and the terminator.
constexpr std::size_t numberBufferSize = 33;

}  // namespace

std::string toString(const std::string& text) {
    return text;
}

std::string toString(const char* text) {
    return text == nullptr ? std::string() : text;
}

std::string toString(long value, int radix) {
    char buffer[numberBufferSize] = {};
    return _ltoa(value, buffer, radix);
}

std::string toString(unsigned long value, int radix) {
    char buffer[numberBufferSize] = {};
    return _ultoa(value, buffer, radix);
}

std::string toString(const void* pointer) {
    if (pointer == nullptr) {
        return {};
    }
    std::string text = "0x";
    const auto value = reinterpret_cast<std::uintptr_t>(pointer);
    for (int shift = 60; shift >= 0; shift -= 4) {
        text += "0123456789ABCDEF"[value >> shift & 0xF];
    }
    return text;
}

std::string& operator<<(std::string& text, const std::string& more) {
    return text += more;
}

std::string& operator<<(std::string& text, const char* more) {
    return more == nullptr ? text : text += more;
}

std::string& operator<<(std::string& text, unsigned long value) {
    return text += toString(value, 10);
}

std::string operator+(const char* text, const std::string& more) {
    if (text == nullptr) {
        return more;
    }
    const std::size_t length = std::strlen(text);
    std::string joined;
    joined.reserve(length + more.size());
    return joined.append(text, length) += more;
}

std::string operator+(const char* text, std::string&& more) {
    return text + std::as_const(more);
}

}  // namespace vok
