// A text in a fixed buffer of 260 characters, for names that the system or a companion knows.
#pragma once

#include <windows.h>

#include <cstddef>

namespace vok {

// What doesn't fit is cut: the last character is always a NUL. Zeroed at construction.
class NameBuffer {
  public:
    static constexpr DWORD size = 260;

    NameBuffer() = default;
    explicit NameBuffer(const char* text) { append(text); }

    // Null counts as empty.
    NameBuffer& append(const char* text);

    // Reads at most `capacity` characters of the text.
    NameBuffer& append(const char* text, std::size_t capacity);

    NameBuffer& operator<<(const char* text) { return append(text); }
    NameBuffer& operator<<(const NameBuffer& text) { return append(text.text()); }

    const char* text() const { return text_; }

    // For system calls that fill the buffer or write to their argument; `size` bytes. The caller
    // must not store anything but NUL in the last one, or call terminate() afterwards.
    char* data() { return text_; }
    void terminate() { text_[size - 1] = '\0'; }

  private:
    char text_[size] = {};
};

}  // namespace vok
