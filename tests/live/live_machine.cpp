#include "live_machine.h"

#include <gtest/gtest.h>
#include <tlhelp32.h>
#include <vok/companion.h>
#include <vok/config_library.h>

#include <fstream>
#include <ios>
#include <string>
#include <vector>

#include "common/machine.h"
#include "common/settings.h"
#include "live_program.h"

namespace vok::test {
namespace {

constexpr char printers_key[] = "System\\CurrentControlSet\\control\\Print\\Printers\\";
constexpr char model_printer[] = "Live Printer";
constexpr DWORD longest_end = 20000;

/// Whatever this process starts ends with it, even when it crashes.
void tieChildren() {
    static const HANDLE job = [] {
        const HANDLE made = CreateJobObjectA(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        AssignProcessToJobObject(made, GetCurrentProcess());
        return made;
    }();
    ASSERT_NE(job, nullptr);
}

void copy(const std::string& from, const std::string& to) {
    ASSERT_TRUE(CopyFileA(from.c_str(), to.c_str(), FALSE))
        << from << " to " << to << ": error " << GetLastError();
}

LSTATUS setText(const std::string& key, const char* value, const std::string& text) {
    return RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), value, REG_SZ, text.c_str(),
                           static_cast<DWORD>(text.size() + 1));
}

void makeFolders(const std::string& path) {
    for (std::size_t end = path.find('\\'); end != std::string::npos;
         end = path.find('\\', end + 1))
        CreateDirectoryA(path.substr(0, end).c_str(), nullptr);
    CreateDirectoryA(path.c_str(), nullptr);
}

}  // namespace

LiveMachine::LiveMachine()
    : logName_(livePrefix() + "Vok.log"),
      folder_("C:\\live\\" + livePrefix()),
      programs_(sample::companionDirectory()) {
    tieChildren();
    sample::serveModel(livePrefix());
    removeAll();
    makeFolders(programs_);
    makeFolders(folder_);
    const std::string product = VOK_LIVE_PRODUCT "\\" VOK_MODEL_PREFIX;
    const std::string model = programs_ + "\\" + livePrefix();
    for (const char* file : {"vok.dll", VOK_CONFIG_LIBRARY_FILE, VOK_DRAL_EXE, VOK_NEMB_EXE})
        copy(product + file, model + file);
    EXPECT_EQ(sample::writeSetting("", sample::trace_file_value, tracePath()), ERROR_SUCCESS);
    EXPECT_EQ(sample::writeSetting("\\XFiles\\Logger", "startLog", 1UL), ERROR_SUCCESS);
}

LiveMachine::~LiveMachine() {
    removeAll();
    for (const std::string& printer : printers_)
        RegDeleteTreeA(HKEY_LOCAL_MACHINE, (printers_key + printer).c_str());
}

void LiveMachine::removeAll() {
    endCompanions();
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, ("SOFTWARE\\" + livePrefix()).c_str());
    for (const std::string& name :
         {logName_, livePrefix() + "XFiles.log", livePrefix() + "Vok" + logName_})
        DeleteFileA(("C:\\" + name).c_str());
    DeleteFileA(tracePath().c_str());
}

std::string LiveMachine::addPrinter(const std::string& name) {
    const std::string printer = livePrefix() + " " + name;
    const std::string key = printers_key + printer;
    printers_.push_back(printer);
    HKEY target = nullptr;
    EXPECT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, key.c_str(), &target), ERROR_SUCCESS);
    HKEY source = nullptr;
    EXPECT_EQ(RegOpenKeyA(HKEY_LOCAL_MACHINE, (std::string(printers_key) + model_printer).c_str(),
                          &source),
              ERROR_SUCCESS)
        << "live.prepare has not been run";
    EXPECT_EQ(RegCopyTreeA(source, nullptr, target), ERROR_SUCCESS);
    RegCloseKey(source);
    RegCloseKey(target);
    EXPECT_EQ(setText(key, "Name", printer), ERROR_SUCCESS);
    EXPECT_EQ(setText(key + "\\PrinterDriverData", VOK_PRINTER_PREFIX_VALUE, livePrefix()),
              ERROR_SUCCESS);
    return printer;
}

std::string LiveMachine::copyLibrary(const std::string& folderName) {
    const std::string folder = folder_ + "\\" + folderName;
    CreateDirectoryA(folder.c_str(), nullptr);
    const std::string path = folder + "\\" + livePrefix() + "vok.dll";
    copy(VOK_LIVE_PRODUCT "\\" VOK_MODEL_PREFIX "vok.dll", path);
    return path;
}

void LiveMachine::replace(const std::string& what, const std::string& fixture) {
    std::string file = livePrefix() + what;
    file += what == "cfg" ? ".dll" : ".EXE";
    copy(VOK_LIVE_FIXTURES "\\" + fixture, programs_ + "\\" + file);
}

std::vector<DWORD> LiveMachine::companions(const std::string& name) const {
    const std::string file = livePrefix() + name + ".EXE";
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::vector<DWORD> ids;
    for (BOOL more = Process32First(snapshot, &entry); more != 0;
         more = Process32Next(snapshot, &entry)) {
        if (lstrcmpiA(entry.szExeFile, file.c_str()) == 0)
            ids.push_back(entry.th32ProcessID);
    }
    CloseHandle(snapshot);
    return ids;
}

void LiveMachine::endCompanions() {
    for (const char* name : {"DRAL", "NEMB"}) {
        for (const DWORD id : companions(name))
            endProcess(id);
    }
}

void endProcess(DWORD id) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
    if (process == nullptr)
        return;
    TerminateProcess(process, 9);
    EXPECT_EQ(WaitForSingleObject(process, longest_end), WAIT_OBJECT_0) << "process " << id;
    CloseHandle(process);
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

}  // namespace vok::test
