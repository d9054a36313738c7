#include <aclapi.h>
#include <gtest/gtest.h>

#include "expect_thrown.h"
#include "simulated_machine.h"
#include "support/security_everyone.h"

namespace vok::test {
namespace {

constexpr const char* buildFailed =
    "SecurityEveryone::SecurityEveryone() InitializeSecurityDescriptor failed";

const Lines buildCalls = {"InitializeSecurityDescriptor(out, 1) = 1",
                          "AllocateAndInitializeSid(1, 1, 0, out) = 1",
                          "IsValidSid(out) = 1",
                          "GetLengthSid(out) = 12",
                          "InitializeAcl(out, 28, 2) = 1",
                          "AddAccessAllowedAce(out, 2, 0x10000000, out) = 1",
                          "SetSecurityDescriptorDacl(out, 1, list, 0) = 1"};

TEST(SecurityEveryone, IsBuiltStepByStep) {
    SimulatedMachine machine;
    SecurityEveryone security(false);
    EXPECT_EQ(machine.system.calls.lines(), buildCalls);
    EXPECT_EQ(machine.system.complaints, Lines());
    EXPECT_EQ(describe(security.getAttributes()),
              "sa{24, inherit=1, dacl=[1: allow 0x10000000 flags=0 everyone]}");
}

TEST(SecurityEveryone, AnInheritableEntryPassesToSubContainers) {
    SimulatedMachine machine;
    SecurityEveryone security(true);
    Lines expected = buildCalls;
    expected.emplace_back("GetAce(out, 0, out) = 1");
    EXPECT_EQ(machine.system.calls.lines(), expected);
    EXPECT_EQ(describe(security.getAttributes()),
              "sa{24, inherit=1, dacl=[1: allow 0x10000000 flags=2 everyone]}");
}

TEST(SecurityEveryone, FreesItsSid) {
    SimulatedMachine machine;
    {
        const SecurityEveryone security(true);
        EXPECT_EQ(machine.system.sids, 1);
        expectCallsOf(machine.system, "FreeSid", {});
    }
    EXPECT_EQ(machine.system.sids, 0);
    expectCallsOf(machine.system, "FreeSid", {"FreeSid(out) = null"});
}

TEST(SecurityEveryone, EachFailureHasItsLineAndLeavesNothing) {
    const struct {
        const char* function;
        const char* message;
        DWORD code;
        DWORD line;
    } failures[] = {
        {"InitializeSecurityDescriptor", buildFailed, 120, 62},
        {"AllocateAndInitializeSid",
         "SecurityEveryone::setSecurityIdEveryone() AllocateAndInitializeSid failed", 8, 86},
        {"IsValidSid", "SecurityEveryone::SecurityEveryone() IsValidSid failed", 1337, 127},
        {"InitializeAcl", buildFailed, 87, 151},
        {"AddAccessAllowedAce", buildFailed, 1344, 159},
        {"SetSecurityDescriptorDacl", buildFailed, 1338, 167},
        {"GetAce", buildFailed, 87, 101},
    };
    for (const auto& failure : failures) {
        SimulatedMachine machine;
        machine.system.faults.fail(failure.function);
        expectThrown([] { const SecurityEveryone security(true); }, failure.message, failure.code,
                     "SecurityEveryone", failure.line);
        EXPECT_EQ(machine.system.sids, 0) << failure.function;
    }
}

TEST(SecurityEveryone, Of9xHoldsNoDescriptorAndAppliesNothing) {
    for (const OsRelease& release : os::all9x) {
        SimulatedMachine machine(release);
        SecurityEveryone security(true);
        EXPECT_EQ(describe(security.getAttributes()), "sa{24, inherit=1, no descriptor}");
        security.doApply(handleOf(Kind::mutex, 1));
        security.doApply(static_cast<HKEY>(handleOf(Kind::key, 1)));
        EXPECT_TRUE(machine.system.calls.all().empty()) << release;
    }
}

TEST(Security, GivesAKernelObjectTheList) {
    SimulatedMachine machine;
    SecurityEveryone security(false);
    const HANDLE mutex = ::CreateMutexA(nullptr, FALSE, "M");
    security.doApply(mutex);
    expectCallsOf(machine.system, "SetKernelObjectSecurity",
                  {"SetKernelObjectSecurity(mutex#1, 4, "
                   "dacl=[1: allow 0x10000000 flags=0 everyone]) = 1"});
    machine.system.faults.fail("SetKernelObjectSecurity");
    expectThrown([&] { security.doApply(mutex); },
                 "Security::doApply() SetKernelObjectSecurity failed ", 5, "Security", 102);
}

TEST(Security, GivesARegistryKeyTheListThatItReadsBack) {
    SimulatedMachine machine;
    SecurityEveryone security(true);
    HKEY key = nullptr;
    machine.system.registry.addKey("K");
    ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "K", 0, KEY_ALL_ACCESS, &key);
    machine.system.calls.clear();
    security.doApply(key);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{"GetSecurityDescriptorDacl(out, out, out, out) = 1",
                     "SetSecurityInfo(options#1, 4, 4, null, null, list, null) = 0"}));
}

TEST(Security, FailuresOnARegistryKeyTellTheirOwnCodes) {
    SimulatedMachine machine;
    SecurityEveryone security(true);
    const auto key = static_cast<HKEY>(handleOf(Kind::key, 1));
    machine.system.faults.fail("GetSecurityDescriptorDacl");
    expectThrown([&] { security.doApply(key); },
                 "Security::doApply() GetSecurityDescriptorDacl failed ", 1338, "Security", 66);
    // The result is the code; the last error is somebody else's.
    machine.system.faults.fail("SetSecurityInfo", Failure{ERROR_ACCESS_DENIED, 4711});
    expectThrown([&] { security.doApply(key); }, "Security::doApply() SetSecurityInfo failed ", 5,
                 "Security", 84);
}

TEST(Security, AppliesToARealMutex) {
    SecurityEveryone security(false);
    const HANDLE mutex = ::CreateMutexA(nullptr, FALSE, nullptr);
    EXPECT_NO_THROW(security.doApply(mutex));
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_EQ(::GetSecurityInfo(mutex, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                nullptr, &list, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->AceCount, 1);
    ::LocalFree(descriptor);
    ::CloseHandle(mutex);
}

}  // namespace
}  // namespace vok::test
