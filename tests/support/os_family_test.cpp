#include "support/os_family.h"

#include <gtest/gtest.h>

#include "simulated_machine.h"

namespace vok::test {
namespace {

TEST(OsFamily, OfEachVersion) {
    const struct {
        DWORD platform;
        DWORD major;
        DWORD minor;
        int family;
    } expected[] = {{1, 4, 0, 1},  {1, 4, 10, 1}, {1, 4, 90, 1}, {1, 5, 0, 1},  {1, 6, 1, 1},
                    {2, 4, 0, 4},  {2, 3, 51, 4}, {2, 5, 0, 2},  {2, 5, 1, 3},  {2, 5, 2, 3},
                    {2, 5, 99, 3}, {2, 6, 0, 6},  {2, 6, 1, 6},  {2, 10, 0, 6}, {0, 0, 0, 4}};
    SimulatedMachine machine;
    for (const auto& one : expected) {
        machine.system.os = OsRelease{"made up", one.platform, one.major, one.minor, 1};
        EXPECT_EQ(GetOsFamily(), one.family)
            << one.platform << ": " << one.major << "." << one.minor;
    }
}

TEST(OsFamily, IsAskedAfreshWithThePlainRecord) {
    SimulatedMachine machine;
    GetOsFamily();
    GetOsFamily();
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"GetVersionExA(148) = 1", "GetVersionExA(148) = 1"}));
}

TEST(OsFamily, OfASystemThatDoesNotTellIsTheEarlyNT) {
    SimulatedMachine machine(os::win98);
    machine.system.faults.fail("GetVersionExA");
    EXPECT_EQ(GetOsFamily(), familyNT4);
    EXPECT_EQ(GetOsFamily(), family9x);
}

TEST(OsFamily, SessionsCameWith51) {
    EXPECT_FALSE(hasSessions(family9x));
    EXPECT_FALSE(hasSessions(familyNT4));
    EXPECT_FALSE(hasSessions(familyNT50));
    EXPECT_TRUE(hasSessions(familyNT51));
    EXPECT_TRUE(hasSessions(familyNT6));
}

}  // namespace
}  // namespace vok::test
