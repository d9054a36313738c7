// A text that takes memory of its own only when it is longer than usual.
#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

namespace vok {

// Grows only. Up to `usual` characters are kept inside the object, longer texts in a std::string,
// with the exceptions of one.
template <std::size_t usual>
class InlineText {
  public:
    InlineText() { usual_[0] = '\0'; }
    InlineText(std::initializer_list<std::string_view> parts) : InlineText() {
        for (const std::string_view part : parts) {
            append(part);
        }
    }
    InlineText(const InlineText& other) : InlineText() { append(other); }
    InlineText& operator=(const InlineText&) = delete;

    InlineText& append(std::string_view text) {
        if (!text.empty()) {
            std::memcpy(extend(text.size()), text.data(), text.size());
        }
        return *this;
    }
    InlineText& append(std::size_t count, char letter) {
        std::memset(extend(count), letter, count);
        return *this;
    }

    const char* c_str() const { return longer_.empty() ? usual_ : longer_.c_str(); }
    std::size_t size() const { return longer_.empty() ? size_ : longer_.size(); }
    operator std::string_view() const { return {c_str(), size()}; }

  private:
    // Where the `count` characters that have been added begin.
    char* extend(std::size_t count) {
        const std::size_t end = size();
        if (!longer_.empty() || count > usual - end) {
            moveOut(end + count);
            return longer_.data() + end;
        }
        size_ = end + count;
        usual_[size_] = '\0';
        return usual_ + end;
    }

    void moveOut(std::size_t size) {
        if (longer_.empty()) {
            longer_.assign(usual_, size_);
        }
        longer_.resize(size);
    }

    // Only the characters that are there, and the NUL behind them, are ever read.
    char usual_[usual + 1];
    std::size_t size_ = 0;
    std::string longer_;
};

}  // namespace vok
