#include "support/config_library.h"

#include <vok/config_library.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/critical_section.h"
#include "support/module.h"

namespace vok {

namespace {

// The smallest buffer that an item is read into, in bytes.
constexpr std::size_t itemBufferSize = 272;

struct Holder {
    CriticalSection lock;
    std::atomic<bool> created = false;
    std::unique_ptr<Module> module;
};

Holder holder;

struct FreeDeleter {
    void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

Module* getConfigLibrary(const std::string& namePrefix) {
    if (holder.created) {
        return holder.module.get();
    }
    const CriticalSectionLock lock(&holder.lock);
    if (!holder.created) {
        try {
            auto module = std::make_unique<Module>(namePrefix + VOK_CONFIG_LIBRARY_FILE, 0);
            module->Load();
            holder.module = std::move(module);
            holder.created = true;
        } catch (...) {
            releaseConfigLibrary();
        }
    }
    return holder.module.get();
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
    holder.created = false;
}

std::uint32_t getConfigData(const Module& module, std::uint32_t first, std::uint32_t item,
                            std::uint32_t third, std::string& out) {
    const auto read = reinterpret_cast<GetConfigDataFn>(
        reinterpret_cast<void*>(module.getProcAddress(VOK_EXPORT_GET_CONFIG_DATA)));
    if (read == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    DWORD size = 0;
    if (read(first, item, third, nullptr, &size) != VOK_CONFIG_SIZE_REPORTED) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    const std::size_t room = std::max<std::size_t>(itemBufferSize, size) + 1;
    // calloc, so that the pages of an absurd size are never touched.
    const std::unique_ptr<char, FreeDeleter> buffer(static_cast<char*>(std::calloc(room, 1)));
    if (buffer == nullptr) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    read(first, item, third, buffer.get(), &size);
    out.assign(buffer.get(), strnlen(buffer.get(), room));
    return 0;
}

}  // namespace vok
