#include "support/registry_key64.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "expect_thrown.h"
#include "simulated_machine.h"

namespace vok::test {
namespace {

constexpr const char* path = R"(SOFTWARE\Demo\XFiles)";
constexpr const char* forEveryone =
    "sa{24, inherit=1, dacl=[1: allow 0x10000000 flags=2 everyone]}";

void open(const char* where, bool create) {
    const RegistryKey64 key(where, create, HKEY_LOCAL_MACHINE);
}

// The paths that were created, in order.
Lines created(const System& system) {
    Lines paths;
    for (const std::string& line : system.calls.linesOf("RegCreateKeyExA")) {
        const std::size_t begin = line.find('"') + 1;
        paths.push_back(line.substr(begin, line.find('"', begin) - begin));
    }
    return paths;
}

TEST(RegistryKey64, OpensAnExistingKeyAndClosesItAgain) {
    SimulatedMachine machine;
    machine.system.registry.addKey(path);
    {
        const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
        EXPECT_EQ(key.getHandle(), handleOf(Kind::options, 1));
    }
    expectCallsOf(
        machine.system, "RegOpenKeyExA",
        {R"(RegOpenKeyExA(HKLM, "SOFTWARE\Demo\XFiles", 0, 0xf013f, out) = 0 -> options#1)"});
    EXPECT_EQ(machine.system.calls.count("RegCreateKeyExA"), 0U);
    EXPECT_EQ(machine.system.calls.names().back(), "FreeSid");
    expectCallsOf(machine.system, "RegCloseKey", {"RegCloseKey(options#1) = 0"});
    expectNoLeaks(machine.system);
}

TEST(RegistryKey64, AsksForThe64BitViewWhereThereIsOne) {
    const struct {
        OsRelease release;
        REGSAM access;
    } expected[] = {{os::win98, 0xF003F}, {os::nt40, 0xF003F},    {os::win2000, 0xF003F},
                    {os::winXp, 0xF013F}, {os::win2003, 0xF013F}, {os::win10, 0xF013F}};
    for (const auto& one : expected) {
        SimulatedMachine machine(one.release);
        machine.system.registry.addKey(path);
        open(path, false);
        EXPECT_EQ(machine.system.registry.openings.back().access, one.access) << one.release;
    }
}

TEST(RegistryKey64, AMissingKeyThatMayNotBeCreatedFailsAsItsOpeningDid) {
    SimulatedMachine machine;
    expectThrown([] { open(path, false); }, "RegistryKey64::regOpenKeyEx()", 2, "RegistryKey64",
                 561);
    machine.system.registry.deny(path);
    expectThrown([] { open(path, false); }, "RegistryKey64::regOpenKeyEx()", 5, "RegistryKey64",
                 561);
    EXPECT_EQ(machine.system.calls.count("RegCreateKeyExA"), 0U);
    expectNoLeaks(machine.system);
    EXPECT_EQ(machine.system.sids, 0);
}

TEST(RegistryKey64, CodesAreTheResultsNotTheLastError) {
    SimulatedMachine machine;
    machine.system.faults.fail("RegOpenKeyExA", Failure{1018, 4711});
    expectThrown([] { open(path, false); }, "RegistryKey64::regOpenKeyEx()", 1018, "RegistryKey64",
                 561);
}

TEST(RegistryKey64, NTCreatesAMissingKeyAtOnceForEveryone) {
    for (const OsRelease& release : os::allNt) {
        SimulatedMachine machine(release);
        open(path, true);
        const std::string access = release.isNtFrom(5, 1) ? "0xf013f" : "0xf003f";
        expectCallsOf(machine.system, "RegCreateKeyExA",
                      {R"(RegCreateKeyExA(HKLM, "SOFTWARE\Demo\XFiles", 0, "", 0, )" + access +
                       ", " + forEveryone + ", out, out) = 0 -> options#1"});
        EXPECT_EQ(machine.system.calls.count("RegOpenKeyExA"), 1U);
        EXPECT_TRUE(machine.system.registry.hasKey(path));
        expectNoLeaks(machine.system);
    }
}

TEST(RegistryKey64, AKeyThatCannotBeCreatedFails) {
    SimulatedMachine machine;
    machine.system.registry.deny(path);
    expectThrown([] { open(path, true); }, "RegistryKey64::regCreateKeyEx()", 5, "RegistryKey64",
                 586);
    expectNoLeaks(machine.system);
    EXPECT_EQ(machine.system.sids, 0);
}

TEST(RegistryKey64, Of9xCreatesOneLevelAtATime) {
    for (const OsRelease& release : os::all9x) {
        SimulatedMachine machine(release);
        open(R"(A\B\C)", true);
        Lines expected;
        const auto create = [&](const char* level, int number) {
            const std::string key = "options#" + std::to_string(number);
            expected.push_back(std::string("RegCreateKeyExA(HKLM, \"") + level +
                               R"(", 0, "", 0, 0xf003f, sa{24, inherit=1, no descriptor}, out, )" +
                               "out) = 0 -> " + key);
            expected.push_back("RegCloseKey(" + key + ") = 0");
        };
        expected.push_back(R"(GetModuleHandleA("kernel32") = kernel32)");
        expected.push_back(R"(GetProcAddress(kernel32, "IsWow64Process") = 0 -> none)");
        expected.push_back(R"(RegOpenKeyExA(HKLM, "A\B\C", 0, 0xf003f, out) = 2)");
        create("A", 1);
        create(R"(A\B)", 2);
        create(R"(A\B\C)", 3);
        expected.push_back(R"(RegOpenKeyExA(HKLM, "A\B\C", 0, 0xf003f, out) = 0 -> options#4)");
        expected.push_back("RegCloseKey(options#4) = 0");
        EXPECT_EQ(machine.system.calls.lines(), expected) << release;
    }
}

TEST(RegistryKey64, LevelsOfOddPaths) {
    const std::pair<const char*, Lines> expected[] = {
        {"A", {"A"}},
        {R"(\A\B)", {R"(\A\B)"}},
        {R"(A\)", {"A", R"(A\)"}},
        {R"(A\\B)", {"A", R"(A\\B)"}},
        {R"(\)", {R"(\)"}},
        {"", {""}},
    };
    for (const auto& [where, levels] : expected) {
        SimulatedMachine machine(os::win98);
        machine.system.faults.fail("RegOpenKeyExA");
        open(where, true);
        EXPECT_EQ(created(machine.system), levels) << where;
        expectNoLeaks(machine.system);
    }
}

TEST(RegistryKey64, ALevelThatCannotBeCreatedEndsTheRestAndLeavesNothingOpen) {
    SimulatedMachine machine(os::win98);
    machine.system.registry.deny(R"(A\B)");
    expectThrown([] { open(R"(A\B\C)", true); }, "RegistryKey64::regCreateKeyEx()", 5,
                 "RegistryKey64", 586);
    EXPECT_EQ(created(machine.system), (Lines{"A", R"(A\B)"}));
    expectNoLeaks(machine.system);
}

TEST(RegistryKey64, Of9xAFinishedPathThatDoesNotOpenFails) {
    SimulatedMachine machine(os::win98);
    machine.system.faults.fail("RegOpenKeyExA", 1, 2);
    expectThrown([] { open("A", true); }, "RegistryKey64::regOpenKeyEx()", 5, "RegistryKey64", 561);
    expectNoLeaks(machine.system);
}

}  // namespace
}  // namespace vok::test
