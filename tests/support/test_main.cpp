// Runs a test program's tests. A hang ends the program with status 42 when one test takes longer
// than VOK_TEST_TIMEOUT seconds (600 when not given), a crash with status 41, both with a message;
// without a debugger or a dialog nobody would ever answer. With VOK_TEST_TOGETHER set, the tests
// that need a process of their own are named and left out.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/own_process.h"

namespace {

constexpr UINT crashed = 41;
constexpr UINT hung = 42;
constexpr int defaultSeconds = 600;

[[noreturn]] void end(UINT status) {
    std::fflush(stdout);
    std::fflush(stderr);
    ::TerminateProcess(::GetCurrentProcess(), status);
    std::abort();
}

LONG WINAPI reportCrash(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    HMODULE module = nullptr;
    ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCSTR>(record.ExceptionAddress), &module);
    std::fprintf(stderr, "crash: exception 0x%08lx at %p (module at %p)\n",
                 static_cast<unsigned long>(record.ExceptionCode), record.ExceptionAddress,
                 static_cast<void*>(module));
    end(crashed);
}

int timeoutSeconds() {
    const char* given = std::getenv("VOK_TEST_TIMEOUT");
    const int seconds = given ? std::atoi(given) : 0;
    return seconds > 0 ? seconds : defaultSeconds;
}

// The seconds of the test that runs.
std::atomic<int> taken = 0;

class EachTestAnew : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override { taken = 0; }
};

// What the watchdog calls while tests replace their program's own imports: taken before the first.
const auto waitFor = &::WaitForSingleObject;

// Counts seconds until an event that the end of the tests sets.
DWORD WINAPI watch(void* finished) {
    constexpr DWORD second = 1000;
    const int seconds = timeoutSeconds();
    while (waitFor(finished, second) == WAIT_TIMEOUT) {
        if (++taken < seconds) {
            continue;
        }
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        std::fprintf(stderr, "hang: not finished after %d seconds, in %s.%s\n", seconds,
                     test ? test->test_suite_name() : "?", test ? test->name() : "?");
        end(hung);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    ::SetUnhandledExceptionFilter(reportCrash);
    ::testing::InitGoogleTest(&argc, argv);
    if (std::getenv("VOK_TEST_TOGETHER") != nullptr) {
        for (const std::string& test : vok::test::testsWithOwnProcess()) {
            std::printf("[  ALONE   ] %s\n", test.c_str());
        }
        vok::test::leaveOutTestsWithOwnProcess();
    }
    ::testing::UnitTest::GetInstance()->listeners().Append(new EachTestAnew);
    const HANDLE finished = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE watchdog = ::CreateThread(nullptr, 0, watch, finished, 0, nullptr);
    const int result = RUN_ALL_TESTS();
    ::SetEvent(finished);
    ::WaitForSingleObject(watchdog, INFINITE);
    ::CloseHandle(watchdog);
    ::CloseHandle(finished);
    return result;
}
