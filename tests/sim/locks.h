// Critical sections: the real ones, counted. The runtime's own are counted with the library's.
#pragma once
#include <atomic>

namespace vok::test {

struct LockCounts {
    std::atomic<long> initialised = 0;
    std::atomic<long> deleted = 0;
    std::atomic<long> entered = 0;
    std::atomic<long> left = 0;
    std::atomic<long> lastErrorReads = 0;
};
LockCounts& lockCounts();

}  // namespace vok::test
