#include "support/name_buffer.h"

#include <algorithm>
#include <cstring>

namespace vok {

NameBuffer& NameBuffer::append(const char* text) {
    return text == nullptr ? *this : append(text, std::strlen(text));
}

NameBuffer& NameBuffer::append(const char* text, std::size_t capacity) {
    const std::size_t used = strnlen(text_, size - 1);
    const std::size_t count = std::min(strnlen(text, capacity), size - 1 - used);
    std::memcpy(text_ + used, text, count);
    text_[used + count] = '\0';
    return *this;
}

}  // namespace vok
