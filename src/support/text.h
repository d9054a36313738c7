// Building log text from numbers, pointers and texts.
#pragma once

#include <string>

namespace vok {

std::string toString(const std::string& text);

// Null counts as empty.
std::string toString(const char* text);

// radix: 2 to 36, lower-case digits. A negative number has a sign in radix 10 only.
std::string toString(long value, int radix);
std::string toString(unsigned long value, int radix);

// "0x" and 16 upper-case digits; empty for null.
std::string toString(const void* pointer);

// Appending; each returns its left operand. A null text changes nothing.
std::string& operator<<(std::string& text, const std::string& more);
std::string& operator<<(std::string& text, const char* more);
std::string& operator<<(std::string& text, unsigned long value);

// Found by ordinary look-up inside the namespace; null counts as empty. The second is there because
// the standard library's own would be taken for a temporary, and read the null.
std::string operator+(const char* text, const std::string& more);
std::string operator+(const char* text, std::string&& more);

}  // namespace vok
