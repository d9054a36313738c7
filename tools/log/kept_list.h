// The first, the last and the notable of many things, and what was left out between them. Of
// bounded size, whatever is added.
#ifndef VOK_LOG_KEPT_LIST_H
#define VOK_LOG_KEPT_LIST_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <variant>
#include <vector>

namespace vok::log {

// T has a member `notable`; a Gap takes what is left out by add(const T&) and counts it in `count`.
template <typename T, typename Gap, std::size_t headSize, std::size_t notableSize,
          std::size_t tailSize>
class KeptList {
  public:
    void add(T item) {
        ++size_;
        if (front_.size() < headSize) {
            front_.emplace_back(std::move(item));
            return;
        }
        tail_.push_back(std::move(item));
        if (tail_.size() > tailSize) {
            pass(std::move(tail_.front()));
            tail_.pop_front();
        }
    }

    std::uint64_t omitted() const { return omitted_; }
    std::uint64_t size() const { return size_; }

    // The latest things, to be changed.
    template <typename Function>
    void changeLatest(Function function) {
        std::for_each(tail_.begin(), tail_.end(), function);
    }

    template <typename OfItem, typename OfGap>
    void forEach(OfItem ofItem, OfGap ofGap) const {
        for (const auto& entry : front_) {
            if (const T* item = std::get_if<T>(&entry)) {
                ofItem(*item);
            } else {
                ofGap(std::get<Gap>(entry));
            }
        }
        for (const T& item : tail_) {
            ofItem(item);
        }
    }

    template <typename OfItem>
    void forEach(OfItem ofItem) const {
        forEach(ofItem, [](const Gap&) {});
    }

  private:
    void pass(T item) {
        if (item.notable && notable_ < notableSize) {
            ++notable_;
            front_.emplace_back(std::move(item));
            return;
        }
        if (front_.empty() || !std::holds_alternative<Gap>(front_.back())) {
            front_.emplace_back(Gap());
        }
        std::get<Gap>(front_.back()).add(item);
        ++omitted_;
    }

    std::vector<std::variant<T, Gap>> front_;
    std::deque<T> tail_;
    std::size_t notable_ = 0;
    std::uint64_t size_ = 0;
    std::uint64_t omitted_ = 0;
};

}  // namespace vok::log

#endif
