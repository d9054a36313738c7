#include "support/mutex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "expect_thrown.h"
#include "simulated_machine.h"

namespace vok::test {
namespace {

constexpr const char* name = R"(Global\A NAME)";

TEST(Mutex, ForEveryoneHasANullListAndIsNotInherited) {
    SimulatedMachine machine;
    const Mutex mutex(false, name, true);
    EXPECT_EQ(
        machine.system.calls.lines(),
        (Lines{"InitializeSecurityDescriptor(out, 1) = 1",
               "SetSecurityDescriptorDacl(out, 1, null, 0) = 1",
               R"(CreateMutexA(sa{24, inherit=0, dacl=null}, 0, "Global\A NAME") = mutex#1)"}));
    EXPECT_EQ(mutex.getName(), name);
}

TEST(Mutex, WithoutThatHasDefaultSecurity) {
    SimulatedMachine machine;
    const Mutex mutex(false, "plain", false);
    EXPECT_EQ(machine.system.calls.lines(), Lines{R"(CreateMutexA(null, 0, "plain") = mutex#1)"});
}

TEST(Mutex, TheFirstOwnerReleasesItOnce) {
    SimulatedMachine machine;
    Mutex mutex(true, name, false);
    EXPECT_NE(machine.system.mutexes.find(name)->owner, 0U);
    mutex.release();
    mutex.release();
    expectCallsOf(machine.system, "ReleaseMutex", {"ReleaseMutex(mutex#1) = 1"});
    EXPECT_EQ(machine.system.mutexes.find(name)->owner, 0U);
}

TEST(Mutex, TheNameGoesWithTheHandle) {
    SimulatedMachine machine;
    {
        const Mutex mutex(false, name, true);
        EXPECT_NE(machine.system.mutexes.find(name), nullptr);
    }
    EXPECT_EQ(machine.system.mutexes.find(name), nullptr);
    expectNoLeaks(machine.system);
}

TEST(Mutex, FailuresToCreateOneSayWhichCallFailed) {
    SimulatedMachine machine;
    const auto make = [] { const Mutex mutex(false, name, true); };
    machine.system.faults.fail("InitializeSecurityDescriptor");
    expectThrown(make, "Mutex::Mutex() InitializeSecurityDescriptor failed", 120, "", 0);
    machine.system.faults.fail("SetSecurityDescriptorDacl");
    expectThrown(make, "Mutex::Mutex() SetSecurityDescriptorDacl failed", 1338, "", 0);
    machine.system.faults.fail("CreateMutexA");
    expectThrown(make, "Mutex::createMutex() CreateMutex failed", 5, "Mutex", 140);
    expectThrown([] { const Mutex mutex(false, std::string(260, 'n'), false); },
                 "Mutex::createMutex() CreateMutex failed", 206, "Mutex", 140);
    expectNoLeaks(machine.system);
}

TEST(Mutex, OpensAnExistingOneWithFullAccess) {
    SimulatedMachine machine;
    machine.system.mutexes.add(name);
    Mutex mutex(name);
    expectCallsOf(machine.system, "OpenMutexA",
                  {R"(OpenMutexA(0x1f0001, 1, "Global\A NAME") = mutex#1)"});
    EXPECT_EQ(mutex.getName(), name);
    mutex.release();
    expectCallsOf(machine.system, "ReleaseMutex", {});
}

TEST(Mutex, OpeningAMissingOrForbiddenOneFails) {
    SimulatedMachine machine;
    expectThrown([] { const Mutex mutex("nowhere"); }, "Mutex::openMutex() openMutex failed", 2,
                 "Mutex", 161);
    machine.system.mutexes.deny("forbidden");
    expectThrown([] { const Mutex mutex("forbidden"); }, "Mutex::openMutex() openMutex failed", 5,
                 "Mutex", 161);
}

TEST(Mutex, AcquireZeroIsFalseWithoutLooking) {
    SimulatedMachine machine;
    Mutex mutex(false, name, false);
    EXPECT_FALSE(mutex.acquire(0));
    expectCallsOf(machine.system, "WaitForSingleObject", {});
}

TEST(Mutex, AcquireWaitsForAsLongAsItIsTold) {
    SimulatedMachine machine;
    machine.system.mutexes.holdElsewhere(name, 500);
    Mutex mutex(name);
    EXPECT_FALSE(mutex.acquire(100));
    mutex.release();
    EXPECT_TRUE(mutex.acquire(1000));
    mutex.release();
    EXPECT_EQ(machine.system.calls.names(),
              (Lines{"OpenMutexA", "WaitForSingleObject", "WaitForSingleObject", "ReleaseMutex"}));
    expectCallsOf(
        machine.system, "WaitForSingleObject",
        {"WaitForSingleObject(mutex#1, 0x64) = 258", "WaitForSingleObject(mutex#1, 0x3e8) = 0"});
}

TEST(Mutex, AnAbandonedOneIsAcquired) {
    SimulatedMachine machine;
    machine.system.mutexes.abandon(name);
    Mutex mutex(name);
    EXPECT_TRUE(mutex.acquire(INFINITE));
    expectCallsOf(machine.system, "WaitForSingleObject",
                  {"WaitForSingleObject(mutex#1, 0xffffffff) = 128"});
    mutex.release();
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
}

TEST(Mutex, AFailingWaitThrowsAndOwnsNothing) {
    SimulatedMachine machine;
    Mutex mutex(false, name, false);
    machine.system.faults.fail("WaitForSingleObject");
    expectThrown([&] { mutex.acquire(10); }, "Mutex::acquire() WaitForSingleObject failed", 6,
                 "Mutex", 123);
    mutex.release();
    expectCallsOf(machine.system, "ReleaseMutex", {});
}

TEST(Mutex, OneReleaseGivesUpEveryAcquisition) {
    SimulatedMachine machine;
    Mutex mutex(false, name, false);
    EXPECT_TRUE(mutex.acquire(INFINITE));
    EXPECT_TRUE(mutex.acquire(INFINITE));
    EXPECT_TRUE(mutex.acquire(INFINITE));
    mutex.release();
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 3U);
    EXPECT_EQ(machine.system.mutexes.countHeld(), 0U);
    mutex.release();
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 3U);
}

TEST(Mutex, AThreadThatDoesNotHoldItReleasesNothing) {
    SimulatedMachine machine;
    Mutex mutex(false, name, false);
    mutex.acquire(INFINITE);
    std::thread([&] { mutex.release(); }).join();
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 0U);
    EXPECT_EQ(machine.system.mutexes.countHeld(), 1U);
    mutex.release();
}

TEST(Mutex, AFailingReleaseHasLoweredTheCountByItsUnit) {
    SimulatedMachine machine;
    Mutex mutex(false, name, false);
    mutex.acquire(INFINITE);
    mutex.acquire(INFINITE);
    machine.system.faults.fail("ReleaseMutex");
    expectThrown([&] { mutex.release(); }, "Mutex::release() ReleaseMutex failed", 288, "Mutex",
                 90);
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 1U);
    mutex.release();
    EXPECT_EQ(machine.system.calls.count("ReleaseMutex"), 2U);
}

}  // namespace
}  // namespace vok::test
