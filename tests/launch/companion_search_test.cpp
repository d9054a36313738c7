#include "launch/companion_search.h"

#include <gtest/gtest.h>

#include <string>

#include "support/logged_machine.h"

namespace vok::test {
namespace {

const std::string searched = "FindXWindow className = ClassFindXWindow WindowName = Title";

TEST(FindXWindow, FoundAtOnceNeedsNoPause) {
    LoggedMachine machine;
    const Window& window = machine.system.desktop.add("Class", "Title");
    EXPECT_EQ(FindXWindow("Class", "Title"), window.handle);
    expectCallsOf(machine.system, "FindWindowA", {R"(FindWindowA("Class", "Title") = window#1)"});
    expectCallsOf(machine.system, "Sleep", {});
    expectMessages(machine.system, {searched, "FindXWindow = " + logText(window.handle) +
                                                  "FindWindow attempts = 0"});
}

TEST(FindXWindow, CountsItsMissesAndPausesAfterEach) {
    for (const size_t misses : {1u, 2u, 199u}) {
        SCOPED_TRACE(misses);
        LoggedMachine machine;
        Window& window = machine.system.desktop.add("Class", "Title");
        window.hiddenFor = misses;
        EXPECT_EQ(FindXWindow("Class", "Title"), window.handle);
        EXPECT_EQ(machine.system.calls.count("FindWindowA"), misses + 1);
        expectCallsOf(machine.system, "Sleep", Lines(misses, "Sleep(10) = 0"));
        expectMessages(machine.system,
                       {searched, "FindXWindow = " + logText(window.handle) +
                                      "FindWindow attempts = " + std::to_string(misses)});
    }
}

TEST(FindXWindow, GivesUpAfterTwoHundredAttempts) {
    LoggedMachine machine;
    machine.system.desktop.add("Class", "Title").hiddenFor = 200;
    EXPECT_EQ(FindXWindow("Class", "Title"), nullptr);
    EXPECT_EQ(machine.system.calls.count("FindWindowA"), 200U);
    expectCallsOf(machine.system, "Sleep", Lines(200, "Sleep(10) = 0"));
    EXPECT_EQ(machine.system.clock.passed(), 2000U);
    expectMessages(machine.system, {searched, "FindXWindow = FindWindow attempts = 200"});
}

TEST(FindXWindow, NullLeavesClassOrTitleOpen) {
    LoggedMachine machine;
    const HWND window = machine.system.desktop.add("Class", "Title").handle;
    EXPECT_EQ(FindXWindow("Class", nullptr), window);
    EXPECT_EQ(FindXWindow(nullptr, "Title"), window);
    expectCallsOf(
        machine.system, "FindWindowA",
        {R"(FindWindowA("Class", null) = window#1)", R"(FindWindowA(null, "Title") = window#1)"});
    const std::string found = "FindXWindow = " + logText(window) + "FindWindow attempts = 0";
    expectMessages(machine.system,
                   {"FindXWindow className = ClassFindXWindow WindowName = ", found,
                    "FindXWindow className = FindXWindow WindowName = Title", found});
}

TEST(IsXFileRunning, OpensTheMutexOfTheNameInCapitals) {
    LoggedMachine machine;
    machine.system.mutexes.add(R"(Global\NEMB)");
    EXPECT_TRUE(IsXFileRunning("nemb"));
    expectCallsOf(machine.system, "OpenMutexA",
                  {R"(OpenMutexA(0x1f0001, 1, "Global\NEMB"))"
                   " = mutex#2"});
    expectMessages(machine.system,
                   {R"(Trying to open mutex :Global\NEMB)", "Nemb is already running"});
}

TEST(IsXFileRunning, ClosesItAgain) {
    SimulatedMachine machine;
    machine.system.mutexes.add(R"(Global\NEMB)");
    EXPECT_TRUE(IsXFileRunning("nemb"));
    expectNoLeaks(machine.system);
}

TEST(IsXFileRunning, NoWithoutAMutexAndTheLogSaysWhy) {
    const LoggedMachine machine;
    EXPECT_FALSE(IsXFileRunning("nemb"));
    expectMessages(machine.system,
                   {R"(Trying to open mutex :Global\NEMB)",
                    "Error Openining Mutex rc=Win32(2The system cannot find the file specified."});
}

TEST(IsXFileRunning, AMutexThatMayNotBeOpenedCountsAsNone) {
    LoggedMachine machine;
    machine.system.mutexes.deny(R"(Global\NEMB)");
    EXPECT_FALSE(IsXFileRunning("nemb"));
    expectMessages(machine.system, {R"(Trying to open mutex :Global\NEMB)",
                                    "Error Openining Mutex rc=Win32(5Access is denied."});
}

// Case counts in names of mutexes; only what C's "C" locale knows as letters is turned.
TEST(IsXFileRunning, TurnsLettersAndNothingElse) {
    const struct {
        const char* name;
        const char* mutex;
    } cases[] = {{"", R"(Global\)"},
                 {"DEMONEMB - Office 2.Stock", R"(Global\DEMONEMB - OFFICE 2.STOCK)"},
                 {"a_z{~@`", R"(Global\A_Z{~@`)"},
                 {"B\xFCro\x83\x61", "Global\\B\xFCRO\x83\x41"}};
    for (const auto& one : cases) {
        SimulatedMachine machine;
        machine.system.mutexes.add(one.mutex);
        EXPECT_TRUE(IsXFileRunning(one.name)) << one.name;
    }
}

}  // namespace
}  // namespace vok::test
