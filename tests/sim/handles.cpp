#include "handles.h"

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vok::test {
namespace {

constexpr uint64_t rangeBegin = 0x5100000000;
constexpr uint64_t rangeEnd = 0x5200000000;
constexpr unsigned kindShift = 24;

// Numbers of a kind. Modules that are there from the start have higher ones.
uint32_t mostHandles(Kind kind) {
    return kind == Kind::module ? firstSystemModule - 1 : (1u << kindShift) / 4 - 1;
}

uint64_t valueOf(const void* handle) {
    return reinterpret_cast<uint64_t>(handle);
}

std::string hexDigits(const char* format, const void* handle) {
    char text[32];
    std::snprintf(text, sizeof(text), format, valueOf(handle));
    return text;
}

constexpr const char* systemModuleNames[] = {"kernel32", "userenv", "wtsapi32", "host"};
static_assert(std::size(systemModuleNames) == lastSystemModule - firstSystemModule);

}  // namespace

const char* kindName(Kind kind) {
    constexpr const char* names[] = {"?",      "file",   "mutex",      "pipe", "process",
                                     "thread", "token",  "printer",    "key",  "options",
                                     "window", "module", "environment"};
    return names[static_cast<size_t>(kind)];
}

HANDLE handleOf(Kind kind, uint32_t number) {
    const uint64_t kindBits = static_cast<uint64_t>(kind) << kindShift;
    return reinterpret_cast<HANDLE>(rangeBegin + kindBits + uint64_t{number} * 4);
}

bool isSimulated(const void* handle) {
    return valueOf(handle) >= rangeBegin && valueOf(handle) < rangeEnd;
}

Kind kindOf(const void* handle) {
    return static_cast<Kind>((valueOf(handle) - rangeBegin) >> kindShift);
}

uint32_t numberOf(const void* handle) {
    return static_cast<uint32_t>(valueOf(handle) & ((1u << kindShift) - 1)) / 4;
}

std::string handleName(const void* handle) {
    if (!handle) {
        return "null";
    }
    if (handle == INVALID_HANDLE_VALUE) {
        return "invalid";
    }
    if (handle == reinterpret_cast<void*>(HKEY_LOCAL_MACHINE)) {
        return "HKLM";
    }
    if (isSimulated(handle) && kindOf(handle) == Kind::module &&
        numberOf(handle) >= firstSystemModule) {
        return systemModuleNames[numberOf(handle) - firstSystemModule];
    }
    if (isSimulated(handle)) {
        return std::string(kindName(kindOf(handle))) + "#" + std::to_string(numberOf(handle));
    }
    return hexDigits("0x%" PRIx64, handle);
}

std::string logText(const void* handle) {
    return handle ? hexDigits("0x%016" PRIX64, handle) : "";
}

Closing Handles::close(const void* handle) {
    if (entries_.erase(handle) != 0) {
        return Closing::closed;
    }
    if (!isSimulated(handle)) {
        return Closing::unknown;
    }
    const bool wasMade = numberOf(handle) >= 1 && numberOf(handle) <= countMade(kindOf(handle));
    return wasMade ? Closing::closedBefore : Closing::unknown;
}

std::vector<std::string> Handles::openNames() const {
    std::vector<std::string> names;
    for (const auto& [handle, object] : entries_) {
        if (kindOf(handle) != Kind::window) {
            names.push_back(handleName(handle));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

size_t Handles::countOpen(Kind kind) const {
    return static_cast<size_t>(std::count_if(entries_.begin(), entries_.end(), [kind](auto& entry) {
        return kindOf(entry.first) == kind;
    }));
}

uint32_t Handles::countMade(Kind kind) const {
    const auto it = last_.find(kind);
    return it == last_.end() ? 0 : it->second;
}

HANDLE Handles::add(Kind kind, std::shared_ptr<void> object) {
    HANDLE handle = nullptr;
    do {  // very long runs come round again
        last_[kind] = last_[kind] % mostHandles(kind) + 1;
        handle = handleOf(kind, last_[kind]);
    } while (isOpen(handle));
    entries_.emplace(handle, std::move(object));
    return handle;
}

void* Handles::find(const void* handle, Kind kind) const {
    const auto it = entries_.find(handle);
    return it == entries_.end() || kindOf(handle) != kind ? nullptr : it->second.get();
}

}  // namespace vok::test
