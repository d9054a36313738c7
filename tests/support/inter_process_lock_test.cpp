#include "support/inter_process_lock.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "expect_thrown.h"
#include "simulated_machine.h"
#include "support/mutex.h"

namespace vok::test {
namespace {

TEST(InterProcessLock, WaitsWithoutABoundAndReleasesAtItsEnd) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    {
        const InterProcessLock lock(&mutex);
    }
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{R"(CreateMutexA(null, 0, "M") = mutex#1)",
                     "WaitForSingleObject(mutex#1, 0xffffffff) = 0", "ReleaseMutex(mutex#1) = 1"}));
}

TEST(InterProcessLock, AMutexWithoutANameIsRefusedBeforeWaiting) {
    SimulatedMachine machine;
    Mutex mutex(false, "", false);
    expectThrown([&] { const InterProcessLock lock(&mutex); }, "InterProcessLock has no name", 0,
                 "InterProcessLock", 16);
    EXPECT_EQ(machine.system.calls.count("WaitForSingleObject"), 0U);
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 0U);
}

TEST(InterProcessLock, AFailingWaitLeavesNothingHeld) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([&] { const InterProcessLock lock(&mutex); },
                 "Mutex::acquire() WaitForSingleObject failed", 6, "Mutex", 123);
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 0U);
}

TEST(InterProcessLock, TheInnerOfTwoReleasesBoth) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    const InterProcessLock outer(&mutex);
    {
        const InterProcessLock inner(&mutex);
    }
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 2U);
}

TEST(InterProcessLock, AFailingReleaseIsThrownFromItsEnd) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    expectThrown(
        [&] {
            const InterProcessLock lock(&mutex);
            machine.system.faults.fail("ReleaseMutex");
        },
        "Mutex::release() ReleaseMutex failed", 288, "Mutex", 90);
}

TEST(InterProcessLock, AFailingReleaseGivesWayToAnExceptionOnItsWay) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    const auto work = [&] {
        const InterProcessLock lock(&mutex);
        machine.system.faults.fail("ReleaseMutex");
        throw std::runtime_error("the first");
    };
    EXPECT_THROW(work(), std::runtime_error);
    EXPECT_EQ(machine.system.faults.fired(), 1U);
}

// Runs while an exception is on its way that the lock has nothing to do with.
struct LocksWhenUnwound {
    SimulatedMachine& machine;
    Mutex& mutex;
    bool& thrown;
    ~LocksWhenUnwound() {
        try {
            const InterProcessLock lock(&mutex);
            machine.system.faults.fail("ReleaseMutex");
        } catch (const Win32Exception&) {
            thrown = true;
        }
    }
};

TEST(InterProcessLock, AFailingReleaseIsThrownAlsoWhileAnotherExceptionIsOnItsWay) {
    SimulatedMachine machine;
    Mutex mutex(false, "M", false);
    bool thrown = false;
    try {
        const LocksWhenUnwound locks{machine, mutex, thrown};
        throw std::runtime_error("unwinds");
    } catch (const std::runtime_error&) {
        EXPECT_TRUE(thrown);
    }
}

}  // namespace
}  // namespace vok::test
