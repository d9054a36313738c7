// The options that a logger has read, and when.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace vok {

// An option's value and the tick, in milliseconds, at which it was read. Aligned to be read and
// written at once.
struct alignas(std::uint64_t) OptionReading {
    std::uint32_t value = 0;
    // Until the option is read, a tick that no other comes after.
    std::uint32_t stamp = 0xFFFFFFFF;

    bool isFresh(std::uint32_t now, std::uint32_t maxAgeMs) const {
        return now > stamp && now - stamp < maxAgeMs;
    }
};

// Any thread may read and write an option at any time; value and stamp go together. Options are
// never taken out.
class OptionCache {
  public:
    using Entry = std::atomic<OptionReading>;
    static_assert(Entry::is_always_lock_free);

    // Those that every record of the library asks for, the category's own among them.
    enum Known : std::size_t { start, all, clock, processId, threadId, library, knownCount };

    static const char* nameOf(Known option);

    Entry& at(Known option) { return known_[option]; }

    // Any option, by its case-sensitive name; not read yet when it is asked for the first time.
    Entry& at(std::string_view name);

  private:
    std::array<Entry, knownCount> known_;
    // Of other categories, under a lock of the process.
    std::map<std::string, Entry, std::less<>> others_;
};

}  // namespace vok
