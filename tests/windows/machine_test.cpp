// Sessions, the spooler and the system's version, as this machine has them.
#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>
#include <winspool.h>

#include <cstdlib>
#include <string>

#include "support/own_process.h"
#include "windows/seen.h"

namespace vok::test {
namespace {

const OwnProcess ownProcess{"Windows.TheSpooler", "what the spooler's functions load into it"};

DWORD processNamed(const char* name) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    DWORD found = 0;
    for (BOOL more = Process32First(snapshot, &entry); more != 0 && found == 0;
         more = Process32Next(snapshot, &entry)) {
        if (lstrcmpiA(entry.szExeFile, name) == 0) {
            found = entry.th32ProcessID;
        }
    }
    CloseHandle(snapshot);
    return found;
}

TEST(Windows, Sessions) {
    const DWORD services = processNamed("services.exe");
    ASSERT_NE(services, 0u);
    DWORD theirs = ~DWORD{0};
    DWORD own = ~DWORD{0};
    ASSERT_NE(ProcessIdToSessionId(services, &theirs), 0);
    ASSERT_NE(ProcessIdToSessionId(GetCurrentProcessId(), &own), 0);
    if (!onWindows()) {
        EXPECT_EQ(theirs, 1u);
        EXPECT_EQ(own, 1u);
        EXPECT_EQ(WTSGetActiveConsoleSessionId(), 1u);
        return;
    }
    EXPECT_EQ(theirs, 0u);
    // Called by a service itself, this shows nothing.
    if (own != theirs) {
        seenOnWindows("sessions", "services are in session 0, a user's program in session " +
                                      std::to_string(own));
    }
}

TEST(Windows, TheSpooler) {
    HANDLE server = nullptr;
    ASSERT_NE(OpenPrinterA(nullptr, &server, nullptr), 0) << GetLastError();
    DWORD needed = 0;
    DWORD count = 0;
    EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, 4, nullptr, 0, &needed, &count);
    ClosePrinter(server);
    const bool inThisProcess = GetModuleHandleA("localspl.dll") != nullptr;
    EXPECT_EQ(inThisProcess, !onWindows());
    if (onWindows()) {
        EXPECT_NE(processNamed("spoolsv.exe"), 0u);
        seenOnWindows("the spooler", "is a process of its own, spoolsv.exe");
    }
}

// This program has no manifest.
TEST(Windows, TheSystemsVersion) {
    OSVERSIONINFOA info = {};
    info.dwOSVersionInfoSize = sizeof info;
    ASSERT_NE(GetVersionExA(&info), 0);
    const std::string told =
        std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion);
    if (!onWindows()) {
        EXPECT_EQ(told, std::atoi(wineVersion().c_str()) < 10 ? "6.1" : "6.2");
        return;
    }
    EXPECT_TRUE(told == "6.1" || told == "6.2") << told;
    seenOnWindows("the system's version", "a program without a manifest sees " + told);
}

}  // namespace
}  // namespace vok::test
