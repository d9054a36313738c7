#include "logging/option_cache.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "logging/option_names.h"
#include "support/critical_section.h"

namespace vok {

namespace {

constexpr std::array<std::string_view, OptionCache::knownCount> knownNames = {
    optionStart, optionAll, optionClock, optionProcessId, optionThreadId};

// One for all caches: each would pay for its own with every call, and next to none needs it.
CriticalSection othersLock;

}  // namespace

const char* OptionCache::nameOf(Known option) {
    return knownNames[option].data();
}

OptionCache::Entry& OptionCache::at(std::string_view name) {
    if (Entry* entry = findPlace(name); entry != nullptr) {
        return *entry;
    }
    if (Entry* entry = findKnown(name); entry != nullptr) {
        return *entry;
    }
    if (Entry* entry = takePlace(name); entry != nullptr) {
        return *entry;
    }
    const CriticalSectionLock lock(&othersLock);
    const auto other = others_.find(name);
    return other != others_.end() ? other->second : others_[std::string(name)];
}

OptionCache::Entry* OptionCache::findKnown(std::string_view name) {
    for (std::size_t i = 0; i < knownCount; ++i) {
        if (knownNames[i] == name) {
            return &known_[i];
        }
    }
    return nullptr;
}

// Of two places that two threads took for one name at once, the first counts.
OptionCache::Entry* OptionCache::findPlace(std::string_view name) {
    const std::size_t count = std::min(taken_.load(std::memory_order_relaxed), places);
    for (std::size_t i = 0; i < count && !name.empty(); ++i) {
        Place& place = places_[i];
        const std::size_t length = place.length.load(std::memory_order_acquire);
        if (name == std::string_view(place.name.data(), length)) {
            return &place.entry;
        }
    }
    return nullptr;
}

OptionCache::Entry* OptionCache::takePlace(std::string_view name) {
    if (name.empty() || name.size() > longestName || taken_ >= places) {
        return nullptr;
    }
    const std::size_t index = taken_.fetch_add(1, std::memory_order_relaxed);
    if (index >= places) {
        return nullptr;
    }
    Place& place = places_[index];
    std::copy(name.begin(), name.end(), place.name.begin());
    // Last: it shows the place to the other threads.
    place.length.store(static_cast<std::uint8_t>(name.size()), std::memory_order_release);
    return &place.entry;
}

}  // namespace vok
