// A thread's very first exception, thrown because there is no memory.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <thread>

#include "faults/restarted_library.h"

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

// More threads, one after another, than there are reserves: each end gives its reserve back.
TEST(FirstException, ReservesAreGivenBack) {
    const RealLibrary library;
    size_t thrown = 0;
    constexpr size_t threads = 150;
    for (size_t i = 0; i < threads; ++i) {
        std::thread([&] { thrown += library.throwsWithoutMemory() ? 1 : 0; }).join();
    }
    EXPECT_EQ(thrown, threads);
}

}  // namespace
}  // namespace vok::test
