#include "processes.h"

#include <tlhelp32.h>

#include <functional>
#include <string>

#include "common/system_text.h"

namespace vok::doctor {

namespace {

using Question = std::function<bool(const PROCESSENTRY32& process)>;

// The first process for which the question is answered by true; all zero when there is none.
PROCESSENTRY32 findProcess(const Question& isIt) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    BOOL more = Process32First(snapshot, &entry);
    while (more != 0 && !isIt(entry)) {
        more = Process32Next(snapshot, &entry);
    }
    CloseHandle(snapshot);
    return more != 0 ? entry : PROCESSENTRY32{};
}

}  // namespace

DWORD processNamed(const std::string& fileName) {
    return findProcess([&fileName](const PROCESSENTRY32& process) {
               return tools::sameName(process.szExeFile, fileName);
           })
        .th32ProcessID;
}

std::string ownerOf(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const PROCESSENTRY32 owner =
        findProcess([id](const PROCESSENTRY32& process) { return process.th32ProcessID == id; });
    const std::string name = owner.szExeFile;
    return "process " + std::to_string(id) + (name.empty() ? "" : ", " + name);
}

}  // namespace vok::doctor
