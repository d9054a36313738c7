// How the shipped DLL is made and loaded: its tables, its entry point, on every system.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>

#include "dll/patched_copy.h"
#include "sim/sim.h"

namespace vok::test {
namespace {

using Names = std::set<std::string>;

// What the library itself calls.
const Names ownFunctions = {"AddAccessAllowedAce",
                            "AllocateAndInitializeSid",
                            "CloseHandle",
                            "ClosePrinter",
                            "ConnectNamedPipe",
                            "CreateFileA",
                            "CreateMutexA",
                            "CreateNamedPipeA",
                            "CreateProcessA",
                            "CreateProcessAsUserA",
                            "DeleteCriticalSection",
                            "DeleteFileA",
                            "DisconnectNamedPipe",
                            "DuplicateTokenEx",
                            "EnterCriticalSection",
                            "FindWindowA",
                            "FormatMessageA",
                            "FreeLibrary",
                            "FreeSid",
                            "GetAce",
                            "GetCurrentProcess",
                            "GetCurrentProcessId",
                            "GetCurrentThread",
                            "GetCurrentThreadId",
                            "GetFileSize",
                            "GetLastError",
                            "GetLengthSid",
                            "GetLocalTime",
                            "GetModuleFileNameA",
                            "GetModuleHandleA",
                            "GetPrinterDataA",
                            "GetPrinterDriverDirectoryA",
                            "GetProcAddress",
                            "GetSecurityDescriptorDacl",
                            "GetSystemDirectoryA",
                            "GetTickCount",
                            "GetVersionExA",
                            "GetWindowsDirectoryA",
                            "ImpersonateLoggedOnUser",
                            "ImpersonateSelf",
                            "InitializeAcl",
                            "InitializeCriticalSection",
                            "InitializeSecurityDescriptor",
                            "IsValidSid",
                            "LeaveCriticalSection",
                            "LoadLibraryA",
                            "OpenMutexA",
                            "OpenPrinterA",
                            "OpenThreadToken",
                            "PostMessageA",
                            "ReadFile",
                            "RegCloseKey",
                            "RegCreateKeyExA",
                            "RegOpenKeyA",
                            "RegOpenKeyExA",
                            "RegQueryValueExA",
                            "RegSetValueExA",
                            "ReleaseMutex",
                            "SendMessageA",
                            "SetFilePointer",
                            "SetKernelObjectSecurity",
                            "SetSecurityDescriptorDacl",
                            "SetSecurityInfo",
                            "Sleep",
                            "WaitForInputIdle",
                            "WaitForSingleObject",
                            "WinExec",
                            "WriteFile"};

// What the runtime that is linked in, GCC 12's or GCC 14's, may call besides: locks, thread-local
// storage, unwinding, characters, modules. None of it opens, starts, sends or writes anything, and
// the first 64-bit Windows has it all.
const Names runtimeFunctions = {"CreateSemaphoreW",
                                "GetModuleHandleW",
                                "GetSystemTimeAsFileTime",
                                "GetThreadId",
                                "IsDBCSLeadByteEx",
                                "LoadLibraryW",
                                "LocalFree",
                                "MultiByteToWideChar",
                                "RaiseException",
                                "ReleaseSemaphore",
                                "RtlCaptureContext",
                                "RtlLookupFunctionEntry",
                                "RtlUnwindEx",
                                "RtlVirtualUnwind",
                                "SetLastError",
                                "TlsAlloc",
                                "TlsFree",
                                "TlsGetValue",
                                "TlsSetValue",
                                "TryEnterCriticalSection",
                                "VirtualProtect",
                                "VirtualQuery",
                                "WideCharToMultiByte"};

// Newer entry points, which an older system's loader would not find.
const Names lookedUpFunctions = {
    "WTSGetActiveConsoleSessionId", "ProcessIdToSessionId",   "IsWow64Process", "WTSQueryUserToken",
    "CreateEnvironmentBlock",       "DestroyEnvironmentBlock"};

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

TEST(Tables, SixExportsAndNoMore) {
    System system;
    const LoadedLibrary library;
    auto names = exportNames(library.module());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names,
              (Lines{VOK_EXPORT_GET_DRAL, VOK_EXPORT_GET_NEMB, VOK_EXPORT_LAUNCH_XFILES,
                     VOK_EXPORT_SEND_DRAL_MSG, VOK_EXPORT_SEND_MSG_EX, VOK_EXPORT_SEND_NEMB_MSG}));
}

TEST(Tables, ImportsFromFiveLibraries) {
    System system;
    const LoadedLibrary library;
    const Names allowed = {"kernel32.dll", "user32.dll", "advapi32.dll", "winspool.drv",
                           "msvcrt.dll"};
    for (const Import& import : library.imports().imports()) {
        EXPECT_TRUE(allowed.contains(lower(import.dll))) << import.dll << " " << import.name;
    }
}

TEST(Tables, ImportsOnlyAllowedFunctions) {
    System system;
    const LoadedLibrary library;
    for (const Import& import : library.imports().imports()) {
        if (lower(import.dll) != "msvcrt.dll") {
            EXPECT_TRUE(ownFunctions.contains(import.name) ||
                        runtimeFunctions.contains(import.name))
                << import.dll << " " << import.name;
        }
        EXPECT_FALSE(lookedUpFunctions.contains(import.name)) << import.name;
    }
}

// An import by number would tie the library to one release of the other.
TEST(Tables, ImportsByNameAlone) {
    System system;
    const LoadedLibrary library;
    for (const Import& import : library.imports().imports()) {
        EXPECT_FALSE(import.name.starts_with("#")) << import.dll << " " << import.name;
    }
}

TEST(Tables, WhatTheLibraryCallsIsImportedAndSimulated) {
    System system;
    const LoadedLibrary library;
    const Names realOnes = {"GetCurrentProcess", "GetCurrentThread"};
    for (const std::string& name : ownFunctions) {
        const Import* import = library.imports().find(name);
        EXPECT_NE(import, nullptr) << name;
        EXPECT_TRUE(substituteFor(name) || realOnes.contains(name)) << name;
    }
}

TEST(Tables, FunctionsOfOldSystemsComeFromWhereTheyAreThere) {
    System system;
    const LoadedLibrary library;
    for (const char* name : {"RegOpenKeyExA", "AllocateAndInitializeSid", "OpenThreadToken",
                             "CreateProcessAsUserA", "SetSecurityInfo"}) {
        ASSERT_NE(library.imports().find(name), nullptr) << name;
        EXPECT_EQ(lower(library.imports().find(name)->dll), "advapi32.dll") << name;
    }
}

TEST(Image, ProtectionsAreOn) {
    System system;
    const LoadedLibrary library;
    const WORD flags = imageHeaders(library.module()).OptionalHeader.DllCharacteristics;
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    constexpr WORD highEntropy = 0x20;
    EXPECT_TRUE(flags & highEntropy);
}

TEST(Image, IsSmall) {
    EXPECT_LE(std::filesystem::file_size(shippedDll()), 256u * 1024u);
}

class EntryPoint : public ::testing::TestWithParam<OsRelease> {};

TEST_P(EntryPoint, LoadsAndReadsTheVersion) {
    System system(GetParam());
    const LoadedLibrary library;
    EXPECT_TRUE(library.isAttached());
    const bool isExtended = GetParam().isNtFrom(5, 0);
    EXPECT_EQ(system.calls.lines(),
              isExtended ? (Lines{"GetVersionExA(148) = 1", "GetVersionExA(156) = 1"})
                         : (Lines{"GetVersionExA(148) = 1"}));
    EXPECT_TRUE(system.complaints.empty());
}

TEST_P(EntryPoint, RefusesAVersionThatCannotBeRead) {
    const size_t reads = GetParam().isNtFrom(5, 0) ? 2 : 1;
    for (size_t n = 1; n <= reads; ++n) {
        System system(GetParam());
        system.faults.fail("GetVersionExA", 0, n);
        const LoadedLibrary library;
        EXPECT_FALSE(library.isAttached()) << "read " << n;
        EXPECT_EQ(system.faults.fired(), 1u);
    }
}

TEST_P(EntryPoint, OtherReasonsChangeNothing) {
    System system(GetParam());
    system.installConfig();
    LoadedLibrary library;
    const HMODULE other = static_cast<HMODULE>(handleOf(Kind::module, 1));
    for (const DWORD reason : {DWORD{DLL_THREAD_ATTACH}, DWORD{DLL_THREAD_DETACH}}) {
        EXPECT_TRUE(library.callEntryPoint(reason, other));
    }
    VKDATA record{};
    library.launchXFiles("Office", "LPT1:", &record);
    EXPECT_TRUE(system.complaints.empty()) << "asked for the name of another module";
    EXPECT_GT(system.calls.count("GetModuleFileNameA"), 0u);
}

TEST_P(EntryPoint, DetachLeavesNothing) {
    System system(GetParam());
    system.addPrinter("Office").startLog();
    LoadedLibrary library;
    VKDATA record{};
    library.sendDralMsg("", SM_STARTPAGE, &record);
    library.sendNembMsg("Office", SM_STARTPAGE, &record);
    library.detach();
    const bool keepsPrinter = GetParam().isNt();  // of NEMB's window names
    expectNoLeaks(system, keepsPrinter ? Lines{"printer#1"} : Lines{});
    EXPECT_EQ(system.sids, 0);
}

INSTANTIATE_TEST_SUITE_P(Every, EntryPoint, ::testing::ValuesIn(os::all),
                         [](const auto& each) { return std::string(each.param.name); });

// Handles of the linked-in runtime's own locks.
std::set<HANDLE>& runtimeHandles() {
    static std::set<HANDLE> all;
    return all;
}

HANDLE WINAPI createSemaphore(LPSECURITY_ATTRIBUTES security, LONG initial, LONG most,
                              LPCWSTR name) {
    const HANDLE semaphore = ::CreateSemaphoreW(security, initial, most, name);
    runtimeHandles().insert(semaphore);
    return semaphore;
}

BOOL WINAPI closeHandle(HANDLE handle) {
    runtimeHandles().erase(handle);
    return real.closeHandle(handle);
}

// A host may load and unload the library for every job.
TEST(Runtime, ClosesItsHandlesAtTheUnload) {
    const System system(os::win10);
    LoadedModule library(productDll(), VOK_MODEL_PREFIX "vok.dll",
                         {{"CreateSemaphoreW", reinterpret_cast<void*>(createSemaphore)},
                          {"CloseHandle", reinterpret_cast<void*>(closeHandle)}});
    ASSERT_TRUE(library.attach());
    library.detach();
    EXPECT_EQ(runtimeHandles().size(), 0u);
}

// With nothing replaced at all.
TEST(RealLoader, LoadsAndUnloads) {
    for (int i = 0; i < 3; ++i) {
        const HMODULE library = ::LoadLibraryA(productDll().c_str());
        ASSERT_NE(library, nullptr) << ::GetLastError();
        EXPECT_NE(::GetProcAddress(library, VOK_EXPORT_LAUNCH_XFILES), nullptr);
        EXPECT_TRUE(::FreeLibrary(library));
    }
}

// A process has about a thousand slots. The first job takes what other libraries keep.
TEST(RealLoader, GivesBackItsThreadLocalSlots) {
    const auto freeSlot = [] {
        const DWORD slot = ::TlsAlloc();
        ::TlsFree(slot);
        return slot;
    };
    DWORD afterFirst = 0;
    for (int job = 0; job < 4; ++job) {
        const HMODULE library = ::LoadLibraryA(productDll().c_str());
        ASSERT_NE(library, nullptr) << ::GetLastError();
        const auto send =
            functionAt<VOKSendMsgExFn>(::GetProcAddress(library, VOK_EXPORT_SEND_MSG_EX));
        const BYTE data = 0;
        EXPECT_EQ(send("", nullptr, 0, 0, &data, 0), 0u);  // throws and catches within
        EXPECT_TRUE(::FreeLibrary(library));
        afterFirst = job == 0 ? freeSlot() : afterFirst;
        EXPECT_EQ(freeSlot(), afterFirst);
    }
}

// SetEvent takes one address as well, and fails: that is no event.
TEST(RealLoader, FailsWithoutHarmWhenTheVersionCannotBeRead) {
    const PatchedCopy copy("GetVersionExA", "SetEvent");
    EXPECT_EQ(::LoadLibraryA(copy.path().c_str()), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_DLL_INIT_FAILED});
}

}  // namespace
}  // namespace vok::test
