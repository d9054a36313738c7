// Memory that shows whoever reads or writes beyond it.
#pragma once
#include <windows.h>

#include <cstddef>
#include <string>

namespace vok::test {

// Bytes that end right before a page that nobody may touch, with a known pattern before them. A
// read-only one ends the program at the first write to it.
class GuardedBytes {
  public:
    enum class Use { readOnly, readWrite };

    GuardedBytes(const void* bytes, size_t size, Use use);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    void* data() const { return data_; }
    std::string bytes() const;
    // Whether nothing was written before them.
    bool isIntact() const;

  private:
    size_t size_;
    unsigned char* pages_;
    size_t before_;  // bytes of the pattern
    unsigned char* data_;
};

}  // namespace vok::test
