#include "guarded_bytes.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace vok::test {
namespace {

constexpr size_t pageSize = 4096;
constexpr unsigned char pattern = 0xA5;

}  // namespace

GuardedBytes::GuardedBytes(const void* bytes, size_t size, Use use) : size_(size) {
    const size_t room = (size + pageSize - 1) / pageSize * pageSize;
    pages_ = static_cast<unsigned char*>(
        ::VirtualAlloc(nullptr, room + pageSize, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    if (!pages_) {
        throw std::bad_alloc();
    }
    before_ = room - size;
    data_ = pages_ + before_;
    std::memset(pages_, pattern, before_);
    std::memcpy(data_, bytes, size);
    DWORD old = 0;
    ::VirtualProtect(pages_ + room, pageSize, PAGE_NOACCESS, &old);
    if (use == Use::readOnly) {
        ::VirtualProtect(pages_, room, PAGE_READONLY, &old);
    }
}

GuardedBytes::~GuardedBytes() {
    ::VirtualFree(pages_, 0, MEM_RELEASE);
}

std::string GuardedBytes::bytes() const {
    return {reinterpret_cast<const char*>(data_), size_};
}

bool GuardedBytes::isIntact() const {
    return std::all_of(pages_, pages_ + before_,
                       [](unsigned char byte) { return byte == pattern; });
}

}  // namespace vok::test
