#include "doctor/doctor_machine.h"

#include <tlhelp32.h>

#include <fstream>
#include <functional>
#include <ios>
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

PlantedFile::PlantedFile(const std::string& path, const std::string& bytes) : path_(path) {
    MoveFileA(path_.c_str(), (path_ + ".aside").c_str());
    std::ofstream file(path_, std::ios::binary);
    file << bytes;
    file.close();
    EXPECT_TRUE(file.good()) << path_;
}

PlantedFile::~PlantedFile() {
    EXPECT_NE(DeleteFileA(path_.c_str()), 0) << path_ << " " << GetLastError();
    MoveFileA((path_ + ".aside").c_str(), path_.c_str());
}

void loadFirst(HANDLE process, const std::string& library) {
    void* const path = VirtualAllocEx(process, nullptr, library.size() + 1,
                                      MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    ASSERT_NE(WriteProcessMemory(process, path, library.c_str(), library.size() + 1, nullptr), 0);
    const HANDLE thread = CreateRemoteThread(
        process, nullptr, 0,
        reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(&LoadLibraryA)), path, 0,
        nullptr);
    ASSERT_NE(thread, nullptr) << GetLastError();
    WaitForSingleObject(thread, INFINITE);
    DWORD loaded = 0;
    GetExitCodeThread(thread, &loaded);
    EXPECT_NE(loaded, 0u) << library;
    CloseHandle(thread);
}

void setOfPrinter(const std::string& printerAndKey, const char* name, const std::string& text) {
    const std::string key = R"(SYSTEM\CurrentControlSet\Control\Print\Printers\)" + printerAndKey;
    const LSTATUS result = text.empty()
                               ? RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name)
                               : RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ,
                                                 text.c_str(), static_cast<DWORD>(text.size() + 1));
    EXPECT_EQ(result, ERROR_SUCCESS) << key;
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

void endPrograms(const std::string& fileName) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more != 0;
         more = Process32Next(snapshot, &entry)) {
        if (lstrcmpiA(entry.szExeFile, fileName.c_str()) == 0) {
            const HANDLE process =
                OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID);
            TerminateProcess(process, 0);
            WaitForSingleObject(process, INFINITE);
            CloseHandle(process);
        }
    }
    CloseHandle(snapshot);
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
    expectProblem(doctor(arguments), anchor);
}

void DoctorTest::expectProblem(const Outcome& outcome, const std::string& anchor) {
    EXPECT_EQ(outcome.status, 1u) << outcome.output;
    EXPECT_NE(firstProblem(outcome.output).find("(docs/troubleshooting.md#" + anchor + ")"),
              std::string::npos)
        << outcome.output;
}

}  // namespace vok::test
