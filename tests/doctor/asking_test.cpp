// Companions that are there and serve nobody: the doctor asks them.
#include <vok/companion.h>

#include <string>

#include "doctor/doctor_machine.h"

namespace vok::test {
namespace {

// A window of this test's, which serves it no more than a program that hangs.
class DeadWindow {
  public:
    DeadWindow(const std::string& className, const std::string& title) : className_(className) {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = className_.c_str();
        EXPECT_NE(RegisterClassA(&windowClass), 0);
        window_ = CreateWindowExA(0, className_.c_str(), title.c_str(), WS_OVERLAPPED, 0, 0, 1, 1,
                                  nullptr, nullptr, windowClass.hInstance, nullptr);
        EXPECT_NE(window_, nullptr);
    }
    ~DeadWindow() {
        DestroyWindow(window_);
        UnregisterClassA(className_.c_str(), GetModuleHandleA(nullptr));
    }
    DeadWindow(const DeadWindow&) = delete;
    DeadWindow& operator=(const DeadWindow&) = delete;

  private:
    std::string className_;
    HWND window_ = nullptr;
};

class HeldMutex {
  public:
    explicit HeldMutex(const char* name) : handle_(CreateMutexA(nullptr, TRUE, name)) {}
    ~HeldMutex() { CloseHandle(handle_); }
    HeldMutex(const HeldMutex&) = delete;
    HeldMutex& operator=(const HeldMutex&) = delete;

  private:
    HANDLE handle_;
};

// NEMB of the demo, which runs for a printer.
class RunningNemb {
  public:
    explicit RunningNemb(const std::string& printer) {
        std::string line = driverFolder + ("DEMONEMB.EXE" VOK_ARG_PRINTER + printer) + VOK_ARG_JOB;
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        EXPECT_NE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                 &startup, &process_),
                  0)
            << line;
    }
    ~RunningNemb() {
        TerminateProcess(process_.hProcess, 0);
        WaitForSingleObject(process_.hProcess, INFINITE);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }
    RunningNemb(const RunningNemb&) = delete;
    RunningNemb& operator=(const RunningNemb&) = delete;

    DWORD id() const { return process_.dwProcessId; }

    // Until its window is there; its mutex is there before.
    void awaitWindow(const char* title) const {
        constexpr DWORD pause = 10;
        while (FindWindowA(nullptr, title) == nullptr) {
            ASSERT_EQ(WaitForSingleObject(process_.hProcess, pause), DWORD{WAIT_TIMEOUT});
        }
    }

  private:
    PROCESS_INFORMATION process_ = {};
};

constexpr char hidden[] = "DRAL Hidden Window-Demo Printer";

// The doctor's own line for the cause is its last one.
void expectCause(const std::string& output, const std::string& cause) {
    EXPECT_NE(output.find("\nmost likely cause of " + cause), std::string::npos) << output;
}

TEST_F(DoctorTest, DralThatServesNoMessages) {
    const DeadWindow shown("a class of its own", "DEMODRAL - Demo Printer");
    const DeadWindow served(hidden, hidden);
    const Outcome outcome = doctor("");
    expectProblem(outcome, "window-silent");
    EXPECT_NE(firstProblem(outcome.output).find("DRAL windows"), std::string::npos);
    EXPECT_NE(firstProblem(outcome.output).find("doctor_test.exe"), std::string::npos);
    expectCause(outcome.output, "jobs that hang or never print: DRAL windows: ");
}

TEST_F(DoctorTest, NembThatServesNoMessages) {
    const DeadWindow window("DEMONEMB - ", "DEMONEMB - Demo Printer");
    const Outcome outcome = doctor("");
    expectProblem(outcome, "window-silent");
    EXPECT_NE(firstProblem(outcome.output).find("NEMB window"), std::string::npos);
}

// Events don't go to windows there.
TEST_F(DoctorTest, SilentWindowsAreNoProblemOnThePipeRoute) {
    const DeadWindow shown("a class of its own", "DEMODRAL - Demo Printer");
    const DeadWindow served(hidden, hidden);
    const Outcome outcome = doctor("--spooler-session 0");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("#window-silent)"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, LaunchAsksTheWindowThatItFinds) {
    const Undo undo(endCompanions);
    const DeadWindow shown("a class of its own", "DEMODRAL - Demo Printer");
    const DeadWindow served(hidden, hidden);
    const Outcome outcome = doctor("--launch");
    EXPECT_EQ(outcome.status, 1u);
    EXPECT_NE(outcome.output.find("problem  launch DRAL                 the window is there, but "
                                  "answers no message after"),
              std::string::npos)
        << outcome.output;
}

TEST_F(DoctorTest, MutexOfAnotherProgram) {
    const HeldMutex mutex(VOK_MUTEX_PREFIX "DEMONEMB - DEMO PRINTER");
    expectProblem("--spooler-session 0", "mutex-foreign");
}

// It runs, but not for this printer: who holds the mutex can't be known.
TEST_F(DoctorTest, MutexWhileNembOfAnotherPrinterRuns) {
    const HeldMutex mutex(VOK_MUTEX_PREFIX "DEMONEMB - DEMO PRINTER");
    const RunningNemb other("Other Printer");
    const Outcome outcome = doctor("--spooler-session 0");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    const std::string line =
        "warning  NEMB mutex                  that of 'DEMONEMB - Demo Printer' is there, and a "
        "program DEMONEMB.EXE runs, process " +
        std::to_string(other.id()) + ": whether that one holds it can't be seen -> ";
    EXPECT_NE(outcome.output.find(line), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("#mutex-foreign)"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, MutexOfTheNembWhoseWindowIsThere) {
    const RunningNemb other("Other Printer");
    const RunningNemb own(printerName);
    own.awaitWindow("DEMONEMB - Demo Printer");
    const Outcome outcome = doctor("--spooler-session 0");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    const std::string line =
        "ok       NEMB mutex                  that of 'DEMONEMB - Demo Printer' is there, and so "
        "is its window, process " +
        std::to_string(own.id()) + ", DEMONEMB.EXE";
    EXPECT_NE(outcome.output.find(line), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, CompanionThatNeverOpensItsPipe) {
    static constexpr char script[] = R"(SOFTWARE\DEMO\Printer\Companion\DRAL)";
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, script, "STARTUP", REG_SZ, "never", 6), 0);
    const Undo undo([] {
        endPrograms("DEMODRAL.EXE");
        endCompanions();
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, script, "STARTUP");
    });
    const Outcome outcome = doctor("--launch --spooler-session 0");
    expectProblem(outcome, "pipe-not-opened");
    EXPECT_NE(firstProblem(outcome.output).find("launch DRAL"), std::string::npos);
    EXPECT_NE(outcome.output.find("DEMONEMB.EXE has opened its pipe after "), std::string::npos)
        << outcome.output;
}

}  // namespace
}  // namespace vok::test
