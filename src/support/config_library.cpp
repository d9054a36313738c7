#include "support/config_library.h"

#include <vok/config_library.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "support/critical_section.h"
#include "support/module.h"

namespace vok {

namespace {

// The smallest buffer that an item is read into, in bytes.
constexpr std::size_t itemBufferSize = 272;

struct Holder {
    CriticalSection lock;
    std::atomic<bool> created = false;
    std::optional<Module> module;
};

Holder holder;

struct FreeDeleter {
    void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

Module* getConfigLibrary(const std::string& namePrefix) {
    if (holder.created) {
        return &*holder.module;
    }
    const CriticalSectionLock lock(&holder.lock);
    if (!holder.created) {
        try {
            holder.module.emplace(namePrefix + VOK_CONFIG_LIBRARY_FILE, 0);
            holder.module->Load();
            holder.created.store(true, std::memory_order_release);
        } catch (...) {
            holder.module.reset();
            return nullptr;
        }
    }
    return &*holder.module;
}

void releaseConfigLibrary() {
    if (!holder.created) {
        return;
    }
    const CriticalSectionLock lock(&holder.lock);
    if (!holder.created) {
        return;
    }
    holder.module.reset();
    holder.created.store(false, std::memory_order_release);
}

std::uint32_t getConfigData(const Module& module, std::uint32_t first, std::uint32_t item,
                            std::uint32_t third, std::string& out) {
    const auto read = reinterpret_cast<GetConfigDataFn>(
        // NOLINTNEXTLINE(bugprone-casting-through-void): no other way is free of GCC's warning
        reinterpret_cast<void*>(module.getProcAddress(VOK_EXPORT_GET_CONFIG_DATA)));
    if (read == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    DWORD size = 0;
    if (read(first, item, third, nullptr, &size) != VOK_CONFIG_SIZE_REPORTED) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    const std::size_t room = std::max<std::size_t>(itemBufferSize, size) + 1;
    char usual[itemBufferSize + 1] = {};
    std::unique_ptr<char, FreeDeleter> larger;
    if (room > sizeof usual) {
        // calloc, so that the pages of an absurd size are never touched.
        larger.reset(static_cast<char*>(std::calloc(room, 1)));
        if (larger == nullptr) {
            return ERROR_INSUFFICIENT_BUFFER;
        }
    }
    char* const buffer = larger == nullptr ? usual : larger.get();
    read(first, item, third, buffer, &size);
    out.assign(buffer, strnlen(buffer, room));
    return 0;
}

}  // namespace vok
