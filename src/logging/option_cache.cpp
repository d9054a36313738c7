#include "logging/option_cache.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "logging/option_names.h"
#include "support/critical_section.h"

namespace vok {

namespace {

constexpr std::array<std::string_view, OptionCache::knownCount> knownNames = {
    optionStart, optionAll, optionClock, optionProcessId, optionThreadId, exportCategory};

// One for all caches: each would pay for its own with every call, and next to none needs it.
CriticalSection othersLock;

}  // namespace

const char* OptionCache::nameOf(Known option) {
    return knownNames[option].data();
}

OptionCache::Entry& OptionCache::at(std::string_view name) {
    const auto known = std::ranges::find(knownNames, name);
    if (known != knownNames.end()) {
        return known_[static_cast<std::size_t>(known - knownNames.begin())];
    }
    const CriticalSectionLock lock(&othersLock);
    const auto other = others_.find(name);
    return other != others_.end() ? other->second : others_[std::string(name)];
}

}  // namespace vok
