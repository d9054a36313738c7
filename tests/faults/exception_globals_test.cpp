// A thread's very first exception, thrown because there is no memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <thread>

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

// What a thread of the library has its exceptions in is kept in a thread-local slot of the
// system's. A process has about a thousand of them, which others may have taken.
DWORD WINAPI noSlotIsFree() {
    return TLS_OUT_OF_INDEXES;
}

BOOL WINAPI slotTakesNothing(DWORD /*slot*/, LPVOID /*value*/) {
    return FALSE;
}

// Throws and catches within, on threads of their own beside each other, twice each.
void expectExceptionsOnTwoThreads(const std::map<std::string, void*>& replaced) {
    System system;
    std::map<std::string, void*> overrides = heap::overrides();
    overrides.insert(replaced.begin(), replaced.end());
    LoadedModule library(productDll(), VOK_MODEL_PREFIX "vok.dll", overrides);
    ASSERT_TRUE(library.attach());
    const auto send = library.function<VOKSendMsgExFn>(VOK_EXPORT_SEND_MSG_EX);
    const auto callTwice = [&] {
        const BYTE data = 0;
        EXPECT_EQ(send("", nullptr, 0, 0, &data, 0), 0U);
        EXPECT_EQ(send("", nullptr, 0, 0, &data, 0), 0U);
    };
    callTwice();  // what the library's first call makes and keeps
    const size_t before = heap::liveSizes().size();
    std::thread([&] {
        callTwice();
        std::thread(callTwice).join();
        callTwice();
    }).join();
    EXPECT_EQ(heap::liveSizes().size(), before);
    EXPECT_THAT(heap::damage(), testing::IsEmpty());
    library.detach();
    heap::clear();
}

TEST(FirstException, ComesFromTheReserveWhenNoSlotIsFree) {
    expectExceptionsOnTwoThreads({{"TlsAlloc", reinterpret_cast<void*>(noSlotIsFree)}});
}

TEST(FirstException, ComesFromTheReserveWhenTheSlotTakesNothing) {
    expectExceptionsOnTwoThreads({{"TlsSetValue", reinterpret_cast<void*>(slotTakesNothing)}});
}

}  // namespace
}  // namespace vok::test
