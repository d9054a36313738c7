// Runs a test program's tests. A hang ends the program with status 42 after VOK_TEST_TIMEOUT
// seconds (50 when not given), a crash with status 41, both with a message; without a debugger or a
// dialog nobody would ever answer.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr UINT crashed = 41;
constexpr UINT hung = 42;
constexpr int defaultSeconds = 50;

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

// Waits for an event that the end of the tests sets: the functions it calls are looked up before
// any test can replace them.
DWORD WINAPI watch(void* finished) {
    const int seconds = timeoutSeconds();
    if (::WaitForSingleObject(finished, static_cast<DWORD>(seconds) * 1000) == WAIT_TIMEOUT) {
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
    const HANDLE finished = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE watchdog = ::CreateThread(nullptr, 0, watch, finished, 0, nullptr);
    const int result = RUN_ALL_TESTS();
    ::SetEvent(finished);
    ::WaitForSingleObject(watchdog, INFINITE);
    ::CloseHandle(watchdog);
    ::CloseHandle(finished);
    return result;
}
