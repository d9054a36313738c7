// Mutexes of the real system, and one object that threads share, as the threads that log do.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "sim/import_table.h"
#include "support/exception.h"
#include "support/inter_process_lock.h"
#include "support/mutex.h"

namespace vok::test {
namespace {

std::string ownName(const char* name) {
    return "VokTest" + std::to_string(::GetCurrentProcessId()) + name;
}

TEST(RealMutex, TwoObjectsOfOneNameExcludeEachOther) {
    Mutex first(false, ownName("Two"), true);
    Mutex second(ownName("Two"));
    ASSERT_TRUE(first.acquire(INFINITE));
    std::thread([&] { EXPECT_FALSE(second.acquire(1)); }).join();
    first.release();
    std::thread([&] {
        EXPECT_TRUE(second.acquire(INFINITE));
        second.release();
    }).join();
}

TEST(RealMutex, OneOfAThreadThatEndedIsAcquired) {
    Mutex left(false, ownName("Abandoned"), true);
    std::thread([&] { EXPECT_TRUE(left.acquire(INFINITE)); }).join();
    Mutex mutex(ownName("Abandoned"));
    EXPECT_TRUE(mutex.acquire(INFINITE));
    mutex.release();
}

TEST(RealMutex, OpeningAMissingOneTellsTheSystemsCode) {
    try {
        const Mutex mutex(ownName("Missing"));
        FAIL();
    } catch (const Win32Exception& thrown) {
        EXPECT_EQ(thrown.getErrorCode(), DWORD{ERROR_FILE_NOT_FOUND});
    }
}

// While one thread is about to return from its last ReleaseMutex, another acquires the same object.
Mutex* shared = nullptr;
std::optional<std::jthread> other;
std::atomic<int> releases = 0;
HANDLE acquired = nullptr;
HANDLE mayEnd = nullptr;
decltype(&::ReleaseMutex) realRelease = nullptr;

BOOL WINAPI releaseAndLetAnotherIn(HANDLE mutex) {
    const BOOL result = realRelease(mutex);
    if (++releases > 1) {
        return result;
    }
    other.emplace([] {
        shared->acquire(INFINITE);
        ::SetEvent(acquired);
        ::WaitForSingleObject(mayEnd, INFINITE);
        shared->release();
    });
    ::WaitForSingleObject(acquired, INFINITE);
    return result;
}

TEST(SharedMutex, IsLeftAloneByAThreadThatHasReleasedIt) {
    Mutex mutex(false, ownName("Shared"), true);
    shared = &mutex;
    acquired = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    mayEnd = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    realRelease = &::ReleaseMutex;
    ImportTable imports(::GetModuleHandleA(nullptr));
    ASSERT_TRUE(imports.replace("ReleaseMutex", reinterpret_cast<void*>(releaseAndLetAnotherIn)));
    ASSERT_TRUE(mutex.acquire(INFINITE));
    EXPECT_NO_THROW(mutex.release());
    EXPECT_EQ(releases, 1);
    ::SetEvent(mayEnd);
    other.reset();
    EXPECT_EQ(releases, 2);
    EXPECT_TRUE(mutex.acquire(1000));
    mutex.release();
    ::CloseHandle(acquired);
    ::CloseHandle(mayEnd);
}

TEST(SharedMutex, SerialisesTheThreadsOfAProcess) {
    constexpr int threads = 4;
    constexpr int rounds = 500;
    Mutex mutex(false, ownName("Many"), true);
    int total = 0;
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const InterProcessLock lock(&mutex);
                ++total;
            }
        });
    }
    running.clear();
    EXPECT_EQ(total, threads * rounds);
}

}  // namespace
}  // namespace vok::test
