// The number values of registry keys.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "expect_thrown.h"
#include "simulated_machine.h"
#include "support/registry_key64.h"

namespace vok::test {
namespace {

constexpr const char* path = "K";
constexpr const char* readFailed = "RegistryKey64::getValue(ulong)x";

class ValuesMachine : public SimulatedMachine {
  public:
    ValuesMachine() { system.registry.addKey(path); }
    void set(DWORD type, const std::string& data) {
        system.registry.setValue(path, "x", RegistryValue{type, data});
    }
};

void expectReadFails(const std::string& message, DWORD code) {
    const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
    std::uint32_t value = 77;
    expectThrown([&] { key.getValue("x", &value); }, message, code, "RegistryKey64", 195);
    EXPECT_EQ(value, 77U);
}

TEST(RegistryValue, IsReadAsA32BitNumber) {
    ValuesMachine machine;
    machine.system.registry.setNumber(path, "x", 0xFFFFFFFF);
    const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
    std::uint32_t value = 0;
    EXPECT_TRUE(key.getValue("X", &value));
    EXPECT_EQ(value, 0xFFFFFFFF);
    expectCallsOf(machine.system, "RegQueryValueExA",
                  {R"(RegQueryValueExA(options#1, "X", null, out, out, 4) = 0 -> 4294967295)"});
}

TEST(RegistryValue, AMissingOneIsNoErrorAndTouchesNothing) {
    ValuesMachine machine;
    const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
    std::uint32_t value = 77;
    EXPECT_FALSE(key.getValue("x", &value));
    EXPECT_EQ(value, 77U);
}

TEST(RegistryValue, OneOfAnotherTypeIsAnErrorWithTheQuerysResult) {
    ValuesMachine machine;
    const std::string wrongType = std::string(readFailed) + " : incorrect value type";
    machine.set(REG_SZ, std::string("longer than that") + '\0');
    expectReadFails(wrongType, 234);
    machine.set(REG_SZ, std::string("abc") + '\0');
    expectReadFails(wrongType, 0);
    machine.set(REG_BINARY, "1234");
    expectReadFails(wrongType, 0);
    machine.set(REG_BINARY, "");
    expectReadFails(wrongType, 0);
    machine.set(REG_QWORD, "12345678");
    expectReadFails(wrongType, 234);
}

TEST(RegistryValue, AnOverlongNumberIsAnErrorOfTheRightType) {
    ValuesMachine machine;
    machine.set(REG_DWORD, "12345678");
    expectReadFails(readFailed, 234);
}

TEST(RegistryValue, AFailingQueryKnowsNoType) {
    ValuesMachine machine;
    machine.system.faults.fail("RegQueryValueExA", Failure{ERROR_ACCESS_DENIED, 4711});
    expectReadFails(std::string(readFailed) + " : incorrect value type", 5);
}

TEST(RegistryValue, IsWrittenAsA32BitNumber) {
    ValuesMachine machine;
    const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
    key.setValue("x", 4294967295U);
    expectCallsOf(machine.system, "RegSetValueExA",
                  {R"(RegSetValueExA(options#1, "x", 0, 4, 4294967295, 4) = 0)"});
    EXPECT_EQ(machine.system.registry.number(path, "x"), 4294967295U);
}

TEST(RegistryValue, AFailureToWriteNamesTheValue) {
    ValuesMachine machine;
    const RegistryKey64 key(path, false, HKEY_LOCAL_MACHINE);
    machine.system.faults.fail("RegSetValueExA", Failure{ERROR_ACCESS_DENIED, 4711});
    expectThrown([&] { key.setValue("x", 1); }, "RegistryKey64::setValue(ulong): Unable to set x",
                 5, "RegistryKey64", 271);
    machine.system.faults.fail("RegSetValueExA", 1);
    expectThrown([&] { key.setValue("", 1); }, "RegistryKey64::setValue(ulong): Unable to set ",
                 1018, "RegistryKey64", 271);
}

TEST(RegistryValue, SurvivesInTheRealRegistry) {
    const std::string parent = "Software\\VokTest" + std::to_string(::GetCurrentProcessId());
    {
        const RegistryKey64 key((parent + "\\Logger").c_str(), true, HKEY_CURRENT_USER);
        key.setValue("startLog", 0xFFFFFFFF);
    }
    {
        const RegistryKey64 key((parent + "\\Logger").c_str(), false, HKEY_CURRENT_USER);
        std::uint32_t value = 0;
        EXPECT_TRUE(key.getValue("startLog", &value));
        EXPECT_EQ(value, 0xFFFFFFFF);
        EXPECT_FALSE(key.getValue("All", &value));
    }
    EXPECT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, (parent + "\\Logger").c_str()), 0);
    EXPECT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, parent.c_str()), 0);
    expectThrown([&] { const RegistryKey64 key(parent.c_str(), false, HKEY_CURRENT_USER); },
                 "RegistryKey64::regOpenKeyEx()", 2, "RegistryKey64", 561);
}

}  // namespace
}  // namespace vok::test
