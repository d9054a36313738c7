#include "support/exception.h"

#include <gtest/gtest.h>

#include <string>

#include "expect_thrown.h"
#include "simulated_machine.h"

namespace vok::test {
namespace {

TEST(Exception, TextOfTheCodeIsDecimalAndEmptyForNone) {
    EXPECT_EQ(Exception("m", 4294967295U, "s", 1).getErrorText(), "4294967295");
    EXPECT_EQ(Exception("m", 0, "s", 1).getErrorText(), "");
    EXPECT_EQ(Win32Exception("m", 0, "s", 1).getErrorText(), "");
}

TEST(Exception, CopiesCarryAllFields) {
    const Win32Exception first("what failed", 5, "Mutex", 123);
    const Win32Exception copy(first);
    Win32Exception assigned("", 0, "", 0);
    assigned = copy;
    expectThrown([&] { throw Win32Exception(assigned); }, "what failed", 5, "Mutex", 123);
}

TEST(Exception, IsCaughtThroughTheBaseWithItsOwnText) {
    SimulatedMachine machine;
    try {
        throw Win32Exception("m", 5, "", 0);
    } catch (const Exception& caught) {
        EXPECT_EQ(caught.errorText(), "Win32(5Access is denied.");
        EXPECT_EQ(caught.code(), 5U);
        EXPECT_EQ(caught.line(), 0U);
        EXPECT_EQ(caught.sourceFile(), "");
    }
}

TEST(SystemMessage, IsAskedForInUsEnglishWithoutInserts) {
    SimulatedMachine machine;
    machine.system.greedyBuffers = true;
    EXPECT_EQ(systemMessage(2), "The system cannot find the file specified.");
    expectCallsOf(machine.system, "FormatMessageA",
                  {"FormatMessageA(0x1200, null, 2, 0x409, out, 256) = 44"});
}

TEST(SystemMessage, LineBreaksAreSqueezedOutAndBlanksStay) {
    SimulatedMachine machine;
    machine.system.messages[77] = "one\r\ntwo\nthree\rfour. \r\n";
    EXPECT_EQ(Win32Exception("m", 77, "", 0).getErrorText(), "Win32(77onetwothreefour. ");
}

TEST(SystemMessage, UnknownCodeGivesTheErrorOfTheLookUp) {
    SimulatedMachine machine;
    EXPECT_EQ(Win32Exception("m", 4711, "", 0).getErrorText(),
              "Win32(4711Error getting message:317");
    machine.system.faults.fail("FormatMessageA", 1);
    EXPECT_EQ(systemMessage(5), "Error getting message:8");
}

TEST(SystemMessage, OneThatFillsTheBufferIsTakenAndALongerOneIsAFailure) {
    SimulatedMachine machine;
    machine.system.messages[78] = std::string(255, 'x');
    EXPECT_EQ(systemMessage(78), std::string(255, 'x'));
    machine.system.messages[79] = std::string(1000, 'x');
    EXPECT_EQ(systemMessage(79), "Error getting message:122");
}

TEST(SystemMessage, TheRealSystemHasTexts) {
    const std::string text = systemMessage(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(text.find("Error getting message:"), std::string::npos);
}

}  // namespace
}  // namespace vok::test
