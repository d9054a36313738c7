#include "support/text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
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
    char text[] = "0x0000000000000000";
    auto value = reinterpret_cast<std::uintptr_t>(pointer);
    for (char* digit = text + sizeof text - 2; value != 0; value >>= 4) {
        *digit-- = "0123456789ABCDEF"[value & 0xF];
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
