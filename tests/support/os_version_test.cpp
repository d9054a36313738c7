#include "support/os_version.h"

#include <gtest/gtest.h>

#include "expect_thrown.h"
#include "own_process.h"
#include "simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess ownProcess{"OsVersion.TheRealSystem",
                            "the version that was read when the program started"};

const OsVersion& version() {
    return OsVersion::getInstance();
}

TEST(OsVersion, CodeOfEachRelease) {
    const struct {
        OsRelease release;
        OsVersion::Code code;
        bool isNT;
        bool isNT5OrLater;
    } expected[] = {
        {os::win95, OsVersion::Win95, false, false},   {os::win98, OsVersion::Win98, false, false},
        {os::winMe, OsVersion::WinMe, false, false},   {os::nt40, OsVersion::WinNT4, true, false},
        {os::win2000, OsVersion::Win2000, true, true}, {os::winXp, OsVersion::WinXP, true, true},
        {os::win2003, OsVersion::Win2003, true, true}, {os::win7, OsVersion::Unknown, true, true},
        {os::win10, OsVersion::Unknown, true, true}};
    for (const auto& one : expected) {
        const SimulatedMachine machine(one.release);
        EXPECT_EQ(version().getVersion(), one.code) << one.release;
        EXPECT_EQ(version().isNT(), one.isNT) << one.release;
        EXPECT_EQ(version().isNT5OrLater(), one.isNT5OrLater) << one.release;
    }
}

TEST(OsVersion, SomeCodesDoNotLookAtThePlatform) {
    const struct {
        DWORD platform;
        DWORD major;
        DWORD minor;
        DWORD code;
    } expected[] = {{1, 4, 0, 1},  {2, 4, 0, 4},  {3, 4, 0, 0},  {2, 4, 10, 2}, {2, 4, 90, 3},
                    {0, 4, 10, 2}, {1, 4, 5, 0},  {2, 4, 11, 0}, {1, 5, 0, 5},  {1, 5, 1, 6},
                    {7, 5, 2, 7},  {2, 5, 3, 0},  {1, 3, 10, 0}, {2, 3, 51, 0}, {1, 6, 0, 0},
                    {2, 6, 0, 0},  {2, 10, 0, 0}, {2, 90, 4, 0}, {0, 0, 0, 0}};
    SimulatedMachine machine;
    for (const auto& one : expected) {
        machine.system.os = OsRelease{"made up", one.platform, one.major, one.minor, 1};
        machine.rereadVersion();
        EXPECT_EQ(version().getVersion(), one.code)
            << one.platform << ": " << one.major << "." << one.minor;
    }
}

TEST(OsVersion, IsReadOnceMoreInFullOnNT5AndLater) {
    for (const OsRelease& release : os::all) {
        SimulatedMachine machine(release);
        const OsVersion read;
        Lines expected = {"GetVersionExA(148) = 1"};
        if (release.isNtFrom(5, 0)) {
            expected.emplace_back("GetVersionExA(156) = 1");
        }
        EXPECT_EQ(machine.system.calls.lines(), expected) << release;
    }
}

TEST(OsVersion, EachFailingReadHasItsText) {
    SimulatedMachine machine(os::win2000);
    machine.system.faults.fail("GetVersionExA", Failure{FALSE, 31}, 1);
    expectThrown([] { const OsVersion read; }, "OsVersion::OsVersion(): GetVersionEx failed", 31,
                 "OsVersion", 221);
    machine.system.faults.fail("GetVersionExA", 0, 2);
    expectThrown([] { const OsVersion read; },
                 "OsVersion::OsVersion(): GetVersionEx failed with OSVERSIONINFOEX", 122,
                 "OsVersion", 231);
}

TEST(OsVersion, ThereIsOneAndItWasReadAtLoad) {
    EXPECT_TRUE(OsVersion::wasReadAtLoad());
    SimulatedMachine machine;
    EXPECT_EQ(&OsVersion::getInstance(), &OsVersion::getInstance());
    EXPECT_EQ(machine.system.calls.count("GetVersionExA"), 0U);
}

TEST(OsVersion, IsWow64WhereTheFunctionExistsWhateverItReports) {
    SimulatedMachine machine;
    EXPECT_TRUE(version().isWow64());
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{R"(GetModuleHandleA("kernel32") = kernel32)",
                     R"(GetProcAddress(kernel32, "IsWow64Process") = 0 -> found)",
                     "IsWow64Process(current, out) = 1"}));
}

TEST(OsVersion, IsNoWow64WhereTheFunctionIsMissingOrFails) {
    SimulatedMachine machine;
    machine.system.faults.fail("IsWow64Process");
    EXPECT_FALSE(version().isWow64());
    machine.system.sessions.wow64Result = FALSE;
    EXPECT_FALSE(version().isWow64());
    machine.system.sessions.wow64Result = 77;
    EXPECT_TRUE(version().isWow64());
    machine.system.modules.hideFunction("IsWow64Process");
    EXPECT_FALSE(version().isWow64());
    machine.system.faults.fail("GetModuleHandleA");
    EXPECT_FALSE(version().isWow64());
}

TEST(OsVersion, TheRealSystemIsNTWithBothViews) {
    EXPECT_TRUE(version().isNT());
    EXPECT_TRUE(version().isWow64());
}

}  // namespace
}  // namespace vok::test
