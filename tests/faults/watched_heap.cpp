#include "faults/watched_heap.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace vok::test::heap {
namespace {

constexpr size_t guardSize = 16;
constexpr unsigned char guardByte = 0xC7;
constexpr unsigned char freshByte = 0xCD;
constexpr unsigned char freedByte = 0xDD;
constexpr size_t poisoned = 65536;  // of a large block only so many bytes
constexpr size_t keptBack = 2000;   // freed blocks that are not given out again yet

struct Block {
    unsigned char* memory;  // with both guards
    size_t size;            // without them
};

struct State {
    std::mutex lock;
    std::unordered_map<void*, size_t> live;
    std::deque<Block> freed;
    std::vector<std::string> damage;
    size_t remaining = 0;  // until the failure; 0: none armed
    Lasting lasting = Lasting::once;
    size_t failed = 0;
    size_t attempted = 0;
};

State& state() {
    static State one;
    return one;
}

bool consistsOf(const unsigned char* begin, size_t size, unsigned char byte) {
    return std::all_of(begin, begin + size, [byte](unsigned char is) { return is == byte; });
}

bool refuses() {
    State& heap = state();
    ++heap.attempted;
    if (heap.remaining == 0 || --heap.remaining > 0) {
        return false;
    }
    heap.remaining = heap.lasting == Lasting::forEver ? 1 : 0;
    ++heap.failed;
    return true;
}

// Fresh memory is zeroed or poisoned; an absurdly large block's pages are not all touched.
void* allocate(size_t size, bool zeroed) {
    State& heap = state();
    const std::lock_guard guard(heap.lock);
    if (refuses() || size > SIZE_MAX - 2 * guardSize) {
        return nullptr;
    }
    auto* memory = static_cast<unsigned char*>(std::calloc(size + 2 * guardSize, 1));
    if (!memory) {
        return nullptr;
    }
    std::memset(memory, guardByte, guardSize);
    if (!zeroed) {
        std::memset(memory + guardSize, freshByte, std::min(size, poisoned));
    }
    std::memset(memory + guardSize + size, guardByte, guardSize);
    heap.live.emplace(memory + guardSize, size);
    return memory + guardSize;
}

void report(const char* what, size_t size) {
    state().damage.push_back(what + std::string(", block of ") + std::to_string(size));
}

void giveUp(const Block& block) {
    if (!consistsOf(block.memory + guardSize, std::min(block.size, poisoned), freedByte)) {
        report("written after it was freed", block.size);
    }
    std::free(block.memory);
}

void release(void* pointer) {
    if (!pointer) {
        return;
    }
    State& heap = state();
    const std::lock_guard guard(heap.lock);
    const auto it = heap.live.find(pointer);
    if (it == heap.live.end()) {
        report("freed twice, or never allocated", 0);
        return;
    }
    const Block block{static_cast<unsigned char*>(pointer) - guardSize, it->second};
    heap.live.erase(it);
    if (!consistsOf(block.memory, guardSize, guardByte) ||
        !consistsOf(block.memory + guardSize + block.size, guardSize, guardByte)) {
        report("overrun", block.size);
    }
    std::memset(block.memory + guardSize, freedByte, std::min(block.size, poisoned));
    heap.freed.push_back(block);
    if (heap.freed.size() > keptBack) {
        giveUp(heap.freed.front());
        heap.freed.pop_front();
    }
}

void* allocateOnly(size_t size) {
    return allocate(size, false);
}

void* allocateZeroed(size_t count, size_t size) {
    if (size != 0 && count > SIZE_MAX / size) {
        return nullptr;
    }
    return allocate(count * size, true);
}

size_t sizeOf(void* pointer) {
    const std::lock_guard guard(state().lock);
    const auto it = state().live.find(pointer);
    return it == state().live.end() ? 0 : it->second;
}

void* reallocate(void* pointer, size_t size) {
    void* memory = allocate(size, false);
    if (memory && pointer) {
        std::memcpy(memory, pointer, std::min(size, sizeOf(pointer)));
        release(pointer);
    }
    return memory;
}

}  // namespace

std::map<std::string, void*> overrides() {
    return {{"malloc", reinterpret_cast<void*>(allocateOnly)},
            {"calloc", reinterpret_cast<void*>(allocateZeroed)},
            {"realloc", reinterpret_cast<void*>(reallocate)},
            {"free", reinterpret_cast<void*>(release)}};
}

void fail(size_t k, Lasting lasting) {
    const std::lock_guard guard(state().lock);
    state().remaining = k;
    state().lasting = lasting;
    state().failed = 0;
    state().attempted = 0;
}

void failNothing() {
    fail(0, Lasting::once);
}

size_t failed() {
    return state().failed;
}

size_t attempted() {
    return state().attempted;
}

std::vector<size_t> liveSizes() {
    const std::lock_guard guard(state().lock);
    std::vector<size_t> sizes;
    for (const auto& [pointer, size] : state().live) {
        sizes.push_back(size);
    }
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}

size_t liveBytes() {
    size_t bytes = 0;
    for (const size_t size : liveSizes()) {
        bytes += size;
    }
    return bytes;
}

void clear() {
    const std::lock_guard guard(state().lock);
    for (const Block& block : state().freed) {
        giveUp(block);
    }
    state().freed.clear();
    for (const auto& [pointer, size] : state().live) {
        std::free(static_cast<unsigned char*>(pointer) - guardSize);
    }
    state().live.clear();
    state().damage.clear();
}

std::vector<std::string> damage() {
    const std::lock_guard guard(state().lock);
    return state().damage;
}

}  // namespace vok::test::heap
