// What becomes of a test program that hangs or crashes: it is run again and told to misbehave.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

namespace vok::test {
namespace {

constexpr const char* misbehave = "VOK_TEST_MISBEHAVE";
constexpr DWORD crashed = 41;
constexpr DWORD hung = 42;

bool isToldTo() {
    return std::getenv(misbehave) != nullptr;
}

// Runs the named test in a process of its own, told to misbehave; tells its exit status.
DWORD runMisbehaving(const std::string& test) {
    char program[MAX_PATH + 1] = "";
    ::GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string line = "\"" + std::string(program) + "\" --gtest_filter=" + test;
    ::SetEnvironmentVariableA(misbehave, "1");
    ::SetEnvironmentVariableA("VOK_TEST_TIMEOUT", "1");
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &process)) {
        return ::GetLastError();
    }
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    ::GetExitCodeProcess(process.hProcess, &status);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return status;
}

TEST(TestProgram, EndsAHang) {
    if (isToldTo()) {
        ::Sleep(INFINITE);
    }
    EXPECT_EQ(runMisbehaving("TestProgram.EndsAHang"), hung);
}

TEST(TestProgram, EndsACrash) {
    if (isToldTo()) {
        ::RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    }
    EXPECT_EQ(runMisbehaving("TestProgram.EndsACrash"), crashed);
}

TEST(TestProgram, ReportsAFailure) {
    EXPECT_FALSE(isToldTo());
    if (!isToldTo()) {
        EXPECT_EQ(runMisbehaving("TestProgram.ReportsAFailure"), 1u);
    }
}

}  // namespace
}  // namespace vok::test
