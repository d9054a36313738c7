// The first and the last of many things, and how many were left out between them.
#ifndef VOK_LOG_HEAD_TAIL_H
#define VOK_LOG_HEAD_TAIL_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace vok::log {

template <typename T, std::size_t headSize, std::size_t tailSize>
class HeadTail {
  public:
    void add(T item) {
        if (head_.size() < headSize) {
            head_.push_back(std::move(item));
            return;
        }
        tail_.push_back(std::move(item));
        if (tail_.size() > tailSize) {
            tail_.pop_front();
            ++omitted_;
        }
    }

    std::uint64_t omitted() const { return omitted_; }
    std::uint64_t size() const { return head_.size() + omitted_ + tail_.size(); }

    template <typename Function>
    void forEach(Function function) const {
        for (const T& item : head_) {
            function(item);
        }
        for (const T& item : tail_) {
            function(item);
        }
    }

  private:
    std::vector<T> head_;
    std::deque<T> tail_;
    std::uint64_t omitted_ = 0;
};

}  // namespace vok::log

#endif
