#include "launch/companion_pipe.h"

#include <gtest/gtest.h>

#include <string>

#include "support/simulated_machine.h"

namespace vok::test {
namespace {

TEST(CompanionPipe, IsOpenToEverybodyUnderThePrintersName) {
    const SimulatedMachine machine;
    const CompanionPipe pipe = createCompanionPipe(R"(\\.\pipe\NEMB)", "Office");
    EXPECT_EQ(pipe.get(), handleOf(Kind::pipe, 1));
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"InitializeSecurityDescriptor(out, 1) = 1",
                     "SetSecurityDescriptorDacl(out, 1, null, 0) = 1",
                     R"(CreateNamedPipeA("\\.\pipe\NEMBOffice", 3, 0, 2, 1024, 1024, 1000, )"
                     "sa{24, inherit=1, dacl=null}) = pipe#1"}));
}

TEST(CompanionPipe, OneThatIsNotKeptIsClosed) {
    const SimulatedMachine machine;
    createCompanionPipe(R"(\\.\pipe\DRAL)", "Office");
    expectNoLeaks(machine.system);
}

// A pipe that can't be made is kept as it is, and never closed.
TEST(CompanionPipe, OneThatCannotBeMadeIsTheInvalidHandle) {
    SimulatedMachine machine;
    machine.system.faults.fail("CreateNamedPipeA");
    EXPECT_EQ(createCompanionPipe(R"(\\.\pipe\DRAL)", "Office").get(), INVALID_HANDLE_VALUE);
    expectCallsOf(machine.system, "CloseHandle", {});
}

TEST(CompanionPipe, ThirdInstanceOfANameIsOneTooMany) {
    const SimulatedMachine machine;
    const CompanionPipe first = createCompanionPipe(R"(\\.\pipe\DRAL)", "Office");
    const CompanionPipe second = createCompanionPipe(R"(\\.\pipe\DRAL)", "Office");
    EXPECT_NE(second.get(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(createCompanionPipe(R"(\\.\pipe\DRAL)", "Office").get(), INVALID_HANDLE_VALUE);
    EXPECT_NE(createCompanionPipe(R"(\\.\pipe\NEMB)", "Office").get(), INVALID_HANDLE_VALUE);
}

TEST(CompanionPipe, NameIsCutAt259Characters) {
    const SimulatedMachine machine;
    createCompanionPipe(R"(\\.\pipe\DRAL)", std::string(300, 'n').c_str());
    createCompanionPipe(R"(\\.\pipe\NEMB)", nullptr);
    EXPECT_EQ(machine.system.pipes.all().at(0)->name, R"(\\.\pipe\DRAL)" + std::string(246, 'n'));
    EXPECT_EQ(machine.system.pipes.all().at(1)->name, R"(\\.\pipe\NEMB)");
}

// The failing descriptor is used as it is.
TEST(CompanionPipe, DescriptorThatCannotBeMade) {
    for (const char* function : {"InitializeSecurityDescriptor", "SetSecurityDescriptorDacl"}) {
        SimulatedMachine machine;
        machine.system.faults.fail(function);
        const CompanionPipe pipe = createCompanionPipe(R"(\\.\pipe\DRAL)", "Office");
        EXPECT_EQ(pipe.get(), handleOf(Kind::pipe, 1)) << function;
    }
}

}  // namespace
}  // namespace vok::test
