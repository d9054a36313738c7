// The simulation itself: loading, recording, failures on demand. Its machine: machine_test.cpp.
#include "sim/sim.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace vok::test {
namespace {

constexpr const char* logPath = R"(C:\log.txt)";

// The probe DLL, loaded as the library will be.
class Probe : public LoadedModule {
  public:
    Probe() : LoadedModule(VOK_SIM_PROBE, "probe.dll") { attach(); }
    DWORD major() const { return function<DWORD (*)()>("probeMajor")(); }
    size_t throwText(const char* text) const {
        return function<size_t (*)(const char*)>("probeThrow")(text);
    }
    DWORD append(const char* path, const char* text) const {
        return function<DWORD (*)(const char*, const char*)>("probeAppend")(path, text);
    }
};

TEST(Loading, ConstructorsSeeTheSimulatedVersion) {
    for (const OsRelease& os : os::all) {
        System system(os);
        const Probe probe;
        EXPECT_TRUE(probe.isAttached()) << os;
        EXPECT_EQ(probe.major(), os.major) << os;
        expectCallsOf(system, "GetVersionExA", {"GetVersionExA(148) = 1"});
    }
}

TEST(Loading, AttachReportsTheEntryPointsResult) {
    System system;
    system.faults.fail("GetVersionExA");
    const Probe probe;
    EXPECT_FALSE(probe.isAttached());
}

TEST(Loading, ExceptionsWorkWithinTheLoadedModule) {
    System system;
    const Probe probe;
    EXPECT_EQ(probe.throwText("four"), 4u);
}

TEST(Loading, EveryObjectIsAnInstanceOfItsOwn) {
    System system;
    const Probe one;
    const Probe two;
    EXPECT_NE(one.module(), two.module());
}

TEST(Loading, UnknownExportThrows) {
    System system;
    const Probe probe;
    EXPECT_THROW(probe.function<void (*)()>("nothing"), std::runtime_error);
}

TEST(Loading, MissingFileThrows) {
    EXPECT_THROW(LoadedModule("no such file.dll", "x.dll"), std::runtime_error);
}

TEST(Importing, ReplacesByNameAndPutsBack) {
    const HMODULE self = ::GetModuleHandleA(nullptr);
    void** slot = nullptr;
    void* before = nullptr;
    {
        ImportTable table(self);
        ASSERT_NE(table.find("GetTickCount"), nullptr);
        EXPECT_EQ(table.find("NoSuchFunction"), nullptr);
        slot = table.find("GetTickCount")->slot;
        before = *slot;
        const auto substitute = +[]() -> DWORD { return 4711; };
        EXPECT_TRUE(table.replace("GetTickCount", reinterpret_cast<void*>(substitute)));
        EXPECT_EQ(::GetTickCount(), 4711u);
        EXPECT_FALSE(table.replace("NoSuchFunction", nullptr));
    }
    EXPECT_EQ(*slot, before);
}

TEST(Recording, ShowsArgumentsAndResultsInOrder) {
    System system;
    const Probe probe;
    system.calls.clear();
    EXPECT_EQ(probe.append(logPath, "hello\r\n"), 0u);
    EXPECT_EQ(
        system.calls.lines(),
        (Lines{R"(CreateFileA("C:\log.txt", 0xc0000000, 3, null, 4, 0x80, null) = file#1)",
               "SetFilePointer(file#1, 0, null, 2) = 0",
               R"(WriteFile(file#1, "hello", 7, out, null) = 1)", "CloseHandle(file#1) = 1"}));
    expectLog(system, logPath, {"hello"});
    expectNoLeaks(system);
}

TEST(Recording, OffStillCounts) {
    System system;
    const Probe probe;
    system.calls.clear();
    system.calls.on = false;
    probe.append(logPath, "hello");
    EXPECT_TRUE(system.calls.all().empty());
    EXPECT_EQ(system.calls.count("WriteFile"), 1u);
}

TEST(Recording, QuietCallsOnlyWhenAskedFor) {
    System system;
    const SimulatedProcess simulated;
    ::GetTickCount();
    EXPECT_TRUE(system.calls.all().empty());
    system.calls.recordAlso("GetTickCount");
    ::GetTickCount();
    EXPECT_EQ(system.calls.lines(), Lines{"GetTickCount() = 100000"});
    EXPECT_EQ(system.calls.count("GetTickCount"), 2u);
}

TEST(Recording, TellsThreadsApart) {
    System system;
    const SimulatedProcess simulated;
    ::FindWindowA(nullptr, "one");
    std::thread([] { ::FindWindowA(nullptr, "two"); }).join();
    const auto& all = system.calls.all();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_NE(all[0].thread, all[1].thread);
}

TEST(Failing, NthCallOfAFunction) {
    System system;
    const Probe probe;
    system.faults.fail("WriteFile", 0, 2);
    EXPECT_EQ(probe.append(logPath, "a"), 0u);
    EXPECT_EQ(probe.append(logPath, "b"), DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(probe.append(logPath, "c"), 0u);
    EXPECT_EQ(system.files.text(logPath), "ac");
    EXPECT_EQ(system.faults.fired(), 1u);
}

TEST(Failing, ForEver) {
    System system;
    const Probe probe;
    system.faults.fail("CreateFileA", 1, 1, Lasting::forEver);
    EXPECT_EQ(probe.append(logPath, "a"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(probe.append(logPath, "b"), DWORD{ERROR_ACCESS_DENIED});
}

TEST(Failing, SweepEndsWhenNothingFires) {
    size_t k = 1;
    for (;; ++k) {
        System system;
        const Probe probe;
        system.faults.clear();
        system.faults.failCall(k);
        probe.append(logPath, "a");
        if (system.faults.fired() == 0) {
            EXPECT_EQ(system.faults.failableCalls(), k - 1);
            break;
        }
    }
    EXPECT_EQ(k, 5u);  // open, seek, write, close; then none
}

TEST(Failing, EveryFailingFunctionHasASubstitute) {
    System system;
    for (const std::string_view name : failingFunctions()) {
        const bool isConfig = name == "GetConfigData";
        EXPECT_TRUE(isConfig || substituteFor(name) || lookedUpFunction(name)) << name;
        EXPECT_GE(failureCount(name), 1u);
    }
    EXPECT_EQ(failureCount("GetTickCount"), 0u);
}

TEST(Failing, ShortCountOfAWrite) {
    System system;
    const Probe probe;
    system.faults.fail("WriteFile", 1);
    EXPECT_EQ(probe.append(logPath, "abc"), 0u);
    EXPECT_EQ(system.files.text(logPath), "");
}

TEST(LastError, SuccessLeavesItAlone) {
    System system;
    const SimulatedProcess simulated;
    system.desktop.add("class", "title");
    ::SetLastError(77);
    EXPECT_NE(::FindWindowA("class", "title"), nullptr);
    EXPECT_EQ(::GetLastError(), 77u);
    EXPECT_EQ(::FindWindowA("class", "other"), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST(Handles, KnownByKindAndNumber) {
    System system;
    const HANDLE first = system.processes.open();
    const HANDLE second = system.processes.open();
    EXPECT_EQ(first, handleOf(Kind::process, 1));
    EXPECT_EQ(handleName(second), "process#2");
    EXPECT_EQ(logText(second), "0x0000005104000008");
    EXPECT_EQ(system.handles.openNames(), (Lines{"process#1", "process#2"}));
}

TEST(Handles, ClosingTwiceIsComplainedOf) {
    System system;
    const SimulatedProcess simulated;
    const HANDLE process = system.processes.open();
    EXPECT_TRUE(::CloseHandle(process));
    EXPECT_FALSE(::CloseHandle(process));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(system.complaints, Lines{"CloseHandle: closed before: process#1"});
}

TEST(Handles, RealOnesGoToTheRealSystem) {
    System system;
    const SimulatedProcess simulated;
    const HANDLE event = ::CreateEventA(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(::WaitForSingleObject(event, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_TRUE(::CloseHandle(event));
    EXPECT_TRUE(system.calls.all().empty());
}

TEST(Clock, MovesBySleepAlone) {
    System system;
    const SimulatedProcess simulated;
    const auto begin = std::chrono::steady_clock::now();
    const DWORD tick = ::GetTickCount();
    ::Sleep(3600000);
    EXPECT_EQ(::GetTickCount(), tick + 3600000);
    EXPECT_EQ(system.clock.logField(), "2024/03/07-10:05:01.042 ");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(1));
    system.clock.setTick(0xFFFFFFFF);
    ::Sleep(2);
    EXPECT_EQ(::GetTickCount(), 1u);
}

}  // namespace
}  // namespace vok::test
