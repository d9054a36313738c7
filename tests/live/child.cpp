#include "live/child.h"

#include <windows.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <ios>
#include <iterator>
#include <string>

namespace vok::test {

namespace {

// A file and not a pipe: what the program starts may outlive it, and would keep a pipe open.
class OutputFile {
  public:
    OutputFile() {
        std::array<char, MAX_PATH> folder{};
        std::array<char, MAX_PATH> path{};
        GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
        GetTempFileNameA(folder.data(), "vok", 0, path.data());
        path_ = path.data();
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        handle_ = CreateFileA(path_.c_str(), GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    ~OutputFile() {
        CloseHandle(handle_);
        DeleteFileA(path_.c_str());
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    HANDLE handle() const { return handle_; }
    std::string text() const { return fileText(path_); }

  private:
    std::string path_;
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// `standardOutput` or, when there is none, the file of the standard error.
Outcome run(const std::string& commandLine, HANDLE standardOutput,
            const std::function<void(void* process)>& beforeItRuns) {
    const OutputFile output;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = standardOutput != nullptr ? standardOutput : output.handle();
    startup.hStdError = output.handle();
    PROCESS_INFORMATION process = {};
    std::string line = commandLine;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                       nullptr, &startup, &process) == 0) {
        const DWORD error = GetLastError();
        return {0xFFFFFFFF, commandLine + ": error " + std::to_string(error)};
    }
    if (beforeItRuns) {
        beforeItRuns(process.hProcess);
    }
    ResumeThread(process.hThread);
    WaitForSingleObject(process.hProcess, INFINITE);
    Outcome outcome;
    GetExitCodeProcess(process.hProcess, &outcome.status);
    outcome.output = output.text();
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return outcome;
}

}  // namespace

Outcome runProgram(const std::string& commandLine,
                   const std::function<void(void* process)>& beforeItRuns) {
    return run(commandLine, nullptr, beforeItRuns);
}

Outcome runWithoutOutput(const std::string& commandLine) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    // Nothing can be written by a handle that is for reading.
    const HANDLE readOnly = CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        &inherited, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const Outcome outcome = run(commandLine, readOnly, {});
    CloseHandle(readOnly);
    return outcome;
}

std::string productFolder() {
    const char* told = std::getenv("VOK_TEST_PRODUCT");
    return told != nullptr ? told : VOK_PRODUCT_FOLDER;
}

std::string product(const std::string& fileName) {
    return "\"" + productFolder() + "/" + fileName + "\"";
}

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace vok::test
