// A thread's very first exception, thrown because there is no memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <latch>
#include <new>
#include <thread>
#include <vector>

#include "faults/restarted_library.h"
#include "faults/watched_heap.h"
#include "sim/sim.h"

namespace vok::test {
namespace {

thread_local bool outOfMemory = false;

void* limitedMalloc(size_t size) {
    return outOfMemory ? nullptr : std::malloc(size);
}

void* limitedCalloc(size_t count, size_t size) {
    return outOfMemory ? nullptr : std::calloc(count, size);
}

// The DLL on the real system, its threads' ends told to it.
class RealLibrary {
  public:
    RealLibrary() : module_(::LoadLibraryA(productDll().c_str())), imports_(module_) {
        imports_.replace("malloc", reinterpret_cast<void*>(limitedMalloc));
        imports_.replace("calloc", reinterpret_cast<void*>(limitedCalloc));
        send_ = functionAt<VOKSendMsgFn>(::GetProcAddress(module_, VOK_EXPORT_SEND_DRAL_MSG));
    }
    ~RealLibrary() {
        imports_.restore();
        ::FreeLibrary(module_);
    }
    RealLibrary(const RealLibrary&) = delete;
    RealLibrary& operator=(const RealLibrary&) = delete;

    // Whether a call without memory let out std::bad_alloc.
    bool throwsWithoutMemory() const {
        outOfMemory = true;
        bool thrown = false;
        try {
            send_(nullptr, SM_OPENJOB, nullptr);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        outOfMemory = false;
        return thrown;
    }

  private:
    HMODULE module_;
    ImportTable imports_;
    VOKSendMsgFn send_;
};

TEST(FirstException, OfAThreadWithoutMemoryLeavesAsWhatItIs) {
    const RealLibrary library;
    EXPECT_TRUE(library.throwsWithoutMemory());
    EXPECT_TRUE(library.throwsWithoutMemory());
}

// How many of so many threads, all of them there at once, say that an exception did as it should.
size_t throwingAtOnce(size_t count, const std::function<bool()>& throws) {
    std::atomic<size_t> thrown = 0;
    std::latch all(static_cast<std::ptrdiff_t>(count));
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            thrown += throws() ? 1 : 0;
            all.arrive_and_wait();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return thrown;
}

// As many threads at once as are promised, none of which has memory for its first exception.
TEST(FirstException, HasAReserveForSixtyFourThreadsAtOnce) {
    const RealLibrary library;
    EXPECT_EQ(throwingAtOnce(64, [&] { return library.throwsWithoutMemory(); }), 64U);
}

TEST(FirstException, ReservesAreGivenBack) {
    const RealLibrary library;
    const auto throws = [&] { return library.throwsWithoutMemory(); };
    EXPECT_EQ(throwingAtOnce(64, throws), 64U);
    // What the system had for those threads, and would give to the next, is taken by others.
    std::latch end(1);
    std::vector<std::thread> others;
    for (size_t i = 0; i < 128; ++i) {
        others.emplace_back([&] { end.wait(); });
    }
    EXPECT_EQ(throwingAtOnce(64, throws), 64U);
    end.count_down();
    for (std::thread& other : others) {
        other.join();
    }
}

// With memory there may be any number, and what their entries took is there for the next threads
// and goes with the library.
TEST(FirstException, OfManyThreadsTakesMemoryOnce) {
    System system;
    LoadedModule library(productDll(), VOK_MODEL_PREFIX "vok.dll", heap::overrides());
    ASSERT_TRUE(library.attach());
    const auto send = library.function<VOKSendMsgExFn>(VOK_EXPORT_SEND_MSG_EX);
    // Throws and catches within.
    const auto call = [&] {
        const BYTE data = 0;
        return send("", nullptr, 0, 0, &data, 0) == 0;
    };
    EXPECT_TRUE(call());  // what the library's first call makes and keeps
    constexpr size_t threads = 150;
    const size_t before = heap::liveSizes().size();
    EXPECT_EQ(throwingAtOnce(threads, call), threads);
    const size_t after = heap::liveSizes().size();
    EXPECT_GT(after, before);
    EXPECT_LT(after, before + threads);
    EXPECT_THAT(heap::damage(), testing::IsEmpty());
    library.detach();
    EXPECT_LT(heap::liveSizes().size(), after - before);
    heap::clear();
}

}  // namespace
}  // namespace vok::test
