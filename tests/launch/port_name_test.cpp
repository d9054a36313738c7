#include "launch/port_name.h"

#include <gtest/gtest.h>

#include <string>

#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const std::string nameKey = R"(SYSTEM\CurrentControlSet\Control\ComputerName\ActiveComputerName)";

struct NameCase {
    const char* source;
    const char* local;
};

TEST(StripComputerName, KeepsWhatFollowsTheFirstOccurrence) {
    const NameCase cases[] = {
        {"", ""},
        {"LPT1:", "LPT1:"},
        {"HOST", ""},
        {"HOSTHOST", "HOST"},
        {R"(\\HOST\queue)", R"(\queue)"},
        {R"(\\HOST\HOSTPRN)", R"(\HOSTPRN)"},
        {R"(\\server\on HOST\x)", R"(\x)"},
        {"HOHOST1", "1"},
        {R"(\\host\queue)", R"(\\host\queue)"},
        {R"(\\HOS\T)", R"(\\HOS\T)"},
        {nullptr, ""},
    };
    const SimulatedMachine machine;
    for (const NameCase& one : cases) {
        EXPECT_EQ(StripComputerName(one.source), one.local) << (one.source ? one.source : "null");
    }
}

// Characters of two bytes on either side, of which the code page of the tests knows nothing.
TEST(StripComputerName, WithBytesBeyondAscii) {
    SimulatedMachine machine;
    EXPECT_EQ(StripComputerName("\x83\x65\x83\x58HOST\\\x83\x65"), "\\\x83\x65");
    machine.system.registry.setText(nameKey, "ComputerName", "B\xDCRO");
    EXPECT_EQ(StripComputerName("\\\\B\xDCRO\\queue"), R"(\queue)");
    EXPECT_EQ(StripComputerName("\\\\B\xFCRO\\queue"), "\\\\B\xFCRO\\queue");
}

TEST(StripComputerName, ReadsTheNameOnceAndClosesTheKey) {
    const SimulatedMachine machine;
    StripComputerName("LPT1:");
    EXPECT_EQ(
        machine.system.calls.lines(),
        (Lines{"RegOpenKeyExA(HKLM, \"" + nameKey + "\", 0, 0x20019, out) = 0 -> key#1",
               R"(RegQueryValueExA(key#1, "ComputerName", null, null, out, 255) = 0 -> "HOST")",
               "RegCloseKey(key#1) = 0"}));
}

TEST(StripComputerName, WithoutANameTheCopyIsExact) {
    const std::string source = R"(\\HOST\queue)";
    SimulatedMachine machine;
    machine.system.registry.setText(nameKey, "ComputerName", "");
    EXPECT_EQ(StripComputerName(source.c_str()), source);
    machine.system.registry.removeValue(nameKey, "ComputerName");
    EXPECT_EQ(StripComputerName(source.c_str()), source);
    machine.system.registry.deny(nameKey);
    EXPECT_EQ(StripComputerName(source.c_str()), source);
    machine.system.registry.allow(nameKey);
    machine.system.registry.removeKey(nameKey);
    EXPECT_EQ(StripComputerName(source.c_str()), source);
    expectNoLeaks(machine.system);
}

TEST(StripComputerName, AReadingThatFailsCountsAsNoName) {
    for (size_t way = 0; way < failureCount("RegQueryValueExA"); ++way) {
        SimulatedMachine machine;
        machine.system.faults.fail("RegQueryValueExA", way);
        EXPECT_EQ(StripComputerName(R"(\\HOST\queue)"), R"(\\HOST\queue)");
        expectNoLeaks(machine.system);
    }
}

TEST(IsUncPath, NeedsAHostAndSomethingBehindIt) {
    const struct {
        const char* text;
        bool isUnc;
    } cases[] = {
        {"", false},
        {"LPT1:", false},
        {R"(\)", false},
        {R"(\\)", false},
        {R"(\\ab)", false},
        {R"(\\a\)", false},
        {R"(\\abc)", false},
        {R"(\\a\q)", true},
        {R"(\\\x)", false},  // four characters
        {R"(\\\xy)", true},
        {R"(\\\\)", false},
        {R"(\\\\\)", true},
        {R"(\\host)", false},
        {R"(\\host\)", false},
        {R"(\\host\q)", true},
        {R"(\\host\\)", true},
        {R"(\\host\q\r)", true},
        {R"(\host\queue)", false},
        {R"(x\\host\q)", false},
        {R"(\x\host\q)", false},
        {R"(//host/queue)", false},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(IsUncPath(one.text), one.isUnc) << one.text;
    }
}

}  // namespace
}  // namespace vok::test
