#include "doctor/doctor_machine.h"

#include <functional>
#include <sstream>
#include <string>

namespace vok::test {

MovedFile::MovedFile(const std::string& name, const std::string& to)
    : from_(driverFolder + name), to_(driverFolder + to) {
    EXPECT_NE(MoveFileA(from_.c_str(), to_.c_str()), 0) << from_ << " " << GetLastError();
}

MovedFile::~MovedFile() {
    MoveFileA(to_.c_str(), from_.c_str());
}

void endCompanions() {
    for (const char* title : {"DEMODRAL - Demo Printer", "DEMONEMB - Demo Printer"}) {
        const HWND window = FindWindowA(nullptr, title);
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
        if (process != nullptr) {
            PostMessageA(window, WM_CLOSE, 0, 0);
            WaitForSingleObject(process, INFINITE);
            CloseHandle(process);
        }
    }
}

Outcome doctor(const std::string& arguments,
               const std::function<void(HANDLE process)>& beforeItRuns) {
    return runProgram(product("vok-doctor.exe") + " --printer \"" + printerName + "\" " + arguments,
                      beforeItRuns);
}

std::string firstProblem(const std::string& output) {
    std::istringstream lines(output);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.starts_with("problem ")) {
            return line;
        }
    }
    return {};
}

void DoctorTest::SetUpTestSuite() {
    runProgram(product("vok-install.exe") + " remove");
    const Outcome installed = runProgram(product("vok-install.exe") + " install");
    ASSERT_EQ(installed.status, 0u) << installed.output;
    const Outcome healthy = doctor("--log on");
    ASSERT_EQ(healthy.status, 0u) << healthy.output;
    ASSERT_EQ(firstProblem(healthy.output), "");
}

void DoctorTest::TearDownTestSuite() {
    const Outcome removed = runProgram(product("vok-install.exe") + " remove");
    EXPECT_EQ(removed.status, 0u) << removed.output;
}

void DoctorTest::expectProblem(const std::string& arguments, const std::string& anchor) {
    const Outcome outcome = doctor(arguments);
    EXPECT_EQ(outcome.status, 1u) << outcome.output;
    EXPECT_NE(firstProblem(outcome.output).find("(docs/troubleshooting.md#" + anchor + ")"),
              std::string::npos)
        << outcome.output;
}

}  // namespace vok::test
