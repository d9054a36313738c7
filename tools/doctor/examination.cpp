#include "examination.h"

#include <fmt/format.h>
#include <tlhelp32.h>
#include <vok/companion.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/system.h"
#include "launch/printer_lookup.h"
#include "launch/system_directory.h"

namespace vok::doctor {

namespace {

// The first process for which the question is answered by true; all zero when there is none.
template <typename Question>
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

std::string Examination::companionPath(const char* fileName) const {
    const std::string name = prefix + fileName;
    return family == family9x ? pathInSystemDirectory(name.c_str()).text() : driverFolder() + name;
}

std::string Examination::hiddenWindow(const Printer& printer) const {
    return VOK_DRAL_HIDDEN +
           (options.suffix.empty() ? sample::titleSuffix(printer.name) : options.suffix);
}

std::string driverFolder() {
    NameBuffer folder;
    GetPrinterDriverDir(folder.data(), NameBuffer::size);
    return folder.text();
}

std::string textOf(const Win32Exception& failure) {
    return failure.getMessage() + " " + tools::errorText(failure.getErrorCode());
}

std::string bitNames(std::uint32_t bits,
                     std::initializer_list<std::pair<std::uint32_t, const char*>> names) {
    std::string text;
    for (const auto& [bit, name] : names) {
        if ((bits & bit) != 0) {
            text += (text.empty() ? "" : ", ") + std::string(name);
        }
    }
    return text;
}

DWORD processNamed(const std::string& fileName) {
    const auto isIt = [&](const auto& it) { return tools::sameName(it.szExeFile, fileName); };
    return findProcess(isIt).th32ProcessID;
}

std::string ownerOf(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const std::string name =
        findProcess([id](const auto& process) { return process.th32ProcessID == id; }).szExeFile;
    return fmt::format("process {}{}{}", id, name.empty() ? "" : ", ", name);
}

}  // namespace vok::doctor
