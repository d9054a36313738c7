// What the simulated machine has: registry, mutexes, files, windows, pipes, programs, libraries.
#include <gtest/gtest.h>
#include <windows.h>

#include <winspool.h>

#include <cstring>
#include <string>
#include <thread>

#include "sim/sim.h"

namespace vok::test {
namespace {

class Machine : public ::testing::Test {
  protected:
    System system{os::winXp};
    SimulatedProcess simulated;
};

TEST_F(Machine, RegistryKeepsValuesTypesAndAccess) {
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "A\\B", 0, 0xF013F, &key), ERROR_FILE_NOT_FOUND);
    SECURITY_ATTRIBUTES security{sizeof(security), nullptr, TRUE};
    ASSERT_EQ(::RegCreateKeyExA(HKEY_LOCAL_MACHINE, "A\\B", 0, nullptr, 0, 0xF013F, &security, &key,
                                nullptr),
              0);
    EXPECT_TRUE(system.registry.hasKey("a"));
    const DWORD five = 5;
    EXPECT_EQ(::RegSetValueExA(key, "n", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&five), 4), 0);
    EXPECT_EQ(system.registry.number("a\\b", "N"), 5u);
    system.registry.setText("A\\B", "text", "a longer one");
    DWORD type = 0;
    DWORD size = 4;
    BYTE data[4] = {};
    EXPECT_EQ(::RegQueryValueExA(key, "text", nullptr, &type, data, &size), ERROR_MORE_DATA);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(::RegCloseKey(key), 0);
    ASSERT_EQ(system.registry.openings.size(), 1u);
    EXPECT_EQ(system.registry.openings[0].access, 0xF013Fu);
    EXPECT_TRUE(system.registry.openings[0].created);
    EXPECT_EQ(system.registry.key("A\\B")->security, "sa{24, inherit=1, no descriptor}");
    expectNoLeaks(system);
}

TEST_F(Machine, MutexIsCountedOwnedAndFoundByName) {
    const HANDLE made = ::CreateMutexA(nullptr, FALSE, "Global\\X");
    EXPECT_EQ(::GetLastError(), 0u);
    const HANDLE opened = ::OpenMutexA(MUTEX_ALL_ACCESS, TRUE, "Global\\X");
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(::WaitForSingleObject(made, INFINITE), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(::WaitForSingleObject(opened, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(system.mutexes.countHeld(), 1u);
    EXPECT_TRUE(::ReleaseMutex(made));
    EXPECT_TRUE(::ReleaseMutex(made));
    EXPECT_FALSE(::ReleaseMutex(made));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_NOT_OWNER});
    ::CloseHandle(made);
    ::CloseHandle(opened);
    EXPECT_EQ(system.mutexes.find("Global\\X"), nullptr);
    EXPECT_EQ(::OpenMutexA(MUTEX_ALL_ACCESS, TRUE, "Global\\X"), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(Machine, MutexOfOthers) {
    system.mutexes.holdElsewhere("X", 500);
    const HANDLE mutex = ::OpenMutexA(MUTEX_ALL_ACCESS, FALSE, "X");
    EXPECT_EQ(::WaitForSingleObject(mutex, 100), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(::WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(system.clock.passed(), 500u);
    ::ReleaseMutex(mutex);
    system.mutexes.abandon("X");
    EXPECT_EQ(::WaitForSingleObject(mutex, INFINITE), DWORD{WAIT_ABANDONED});
    system.mutexes.holdElsewhere("Y", INFINITE);
    EXPECT_EQ(::WaitForSingleObject(::OpenMutexA(MUTEX_ALL_ACCESS, FALSE, "Y"), INFINITE),
              WAIT_FAILED);
    EXPECT_EQ(system.complaints, Lines{"WaitForSingleObject: waits for ever for Y"});
}

TEST_F(Machine, MutexKeepsThreadsApart) {
    const HANDLE mutex = ::CreateMutexA(nullptr, FALSE, "X");
    int counter = 0;
    const auto work = [&] {
        for (int i = 0; i < 500; ++i) {
            ::WaitForSingleObject(mutex, INFINITE);
            ++counter;
            ::ReleaseMutex(mutex);
        }
    };
    std::thread one(work);
    std::thread two(work);
    one.join();
    two.join();
    EXPECT_EQ(counter, 1000);
}

HANDLE openFile(const char* path, DWORD share, DWORD disposition = OPEN_ALWAYS) {
    return ::CreateFileA(path, GENERIC_READ | GENERIC_WRITE, share, nullptr, disposition, 0,
                         nullptr);
}

TEST_F(Machine, FilesShareLockAndFill) {
    const char* path = "C:\\a.log";
    EXPECT_EQ(openFile(path, 3, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const HANDLE alone = openFile(path, 0);
    EXPECT_EQ(openFile(path, 3), INVALID_HANDLE_VALUE);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    DWORD moved = 0;
    EXPECT_TRUE(::WriteFile(alone, "abc\r\n", 5, &moved, nullptr));
    EXPECT_EQ(::GetFileSize(alone, nullptr), 5u);
    EXPECT_EQ(::SetFilePointer(alone, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    system.files.diskFull = true;
    EXPECT_FALSE(::WriteFile(alone, "x", 1, &moved, nullptr));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_DISK_FULL});
    ::CloseHandle(alone);
    system.files.lock(path);
    EXPECT_EQ(openFile(path, 3), INVALID_HANDLE_VALUE);
    EXPECT_EQ(system.files.lines("c:\\A.LOG"), Lines{"abc"});
}

TEST_F(Machine, FileOfThreeGigabytesTellsItsSize) {
    system.files.pretendSize("C:\\big", 3ull << 30);
    const HANDLE file = openFile("C:\\big", 3);
    DWORD high = 1;
    EXPECT_EQ(::GetFileSize(file, &high), 3u << 30);
    EXPECT_EQ(high, 0u);
}

TEST_F(Machine, WindowsAnswerAndKeepWhatTheyGet) {
    Window& window = system.desktop.add("Class", "Title", {2, 1});
    window.hiddenFor = 1;
    EXPECT_EQ(::FindWindowA(nullptr, "title"), nullptr);
    const HWND found = ::FindWindowA("class", nullptr);
    ASSERT_EQ(found, window.handle);
    char block[] = "block";
    COPYDATASTRUCT data{1125, sizeof(block), block};
    const auto address = reinterpret_cast<LPARAM>(&data);
    EXPECT_EQ(::SendMessageA(found, WM_COPYDATA, 0, address), 2);
    EXPECT_EQ(::SendMessageA(found, WM_COPYDATA, 0, address), 1);
    EXPECT_EQ(::SendMessageA(found, WM_COPYDATA, 0, address), 1);
    EXPECT_TRUE(::PostMessageA(found, 1200, 0, 65));
    ASSERT_EQ(window.received.size(), 4u);
    EXPECT_EQ(window.received[0].dataId, 1125u);
    EXPECT_EQ(window.received[0].data, std::string(block, sizeof(block)));
    EXPECT_TRUE(window.received[3].posted);
    system.desktop.remove(window);
    EXPECT_FALSE(::PostMessageA(found, 1200, 0, 65));
}

TEST_F(Machine, StartsRunTheirHookAndGiveHandles) {
    system.processes.onStart = [this](const Start& start) {
        system.desktop.add("", start.commandLine);
    };
    EXPECT_EQ(::WinExec("a.exe /x", 5), 33u);
    EXPECT_NE(::FindWindowA(nullptr, "a.exe /x"), nullptr);
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    char line[] = " args";
    EXPECT_TRUE(::CreateProcessA("b.exe", line, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                 &startup, &process));
    EXPECT_EQ(process.hProcess, handleOf(Kind::process, 1));
    system.processes.refuse("c.exe", ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(::WinExec("c.exe", 5), UINT{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(system.processes.starts.size(), 2u);
}

constexpr const char* pipeName = R"(\\.\pipe\DRALOffice)";

HANDLE makePipe(DWORD instances = 2) {
    return ::CreateNamedPipeA(pipeName, 3, 0, instances, 1024, 1024, 1000, nullptr);
}

TEST_F(Machine, PipeConnectsOnceAndAnswers) {
    system.pipes.client(pipeName) = PipeClient::answering({0, 2});
    const HANDLE pipe = makePipe();
    EXPECT_TRUE(::ConnectNamedPipe(pipe, nullptr));
    EXPECT_FALSE(::ConnectNamedPipe(pipe, nullptr));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_PIPE_CONNECTED});
    LONG reply = 9;
    DWORD moved = 0;
    EXPECT_TRUE(::WriteFile(pipe, "abcd", 4, &moved, nullptr));
    EXPECT_TRUE(::ReadFile(pipe, &reply, 4, &moved, nullptr));
    EXPECT_EQ(reply, 0);
    EXPECT_TRUE(::ReadFile(pipe, &reply, 4, &moved, nullptr));
    EXPECT_EQ(reply, 2);
    EXPECT_TRUE(::DisconnectNamedPipe(pipe));
    EXPECT_TRUE(::CloseHandle(pipe));
    EXPECT_EQ(system.pipes.last(pipeName).writes, Lines{"abcd"});
    EXPECT_EQ(system.pipes.last(pipeName).parameters, "3, 0, 2, 1024, 1024, 1000, null");
    EXPECT_TRUE(system.pipes.last(pipeName).closed);
}

TEST_F(Machine, PipeClientsThatFail) {
    PipeClient& client = system.pipes.client(pipeName);
    client.answers = {std::string(3, '\x07'), ""};
    const HANDLE pipe = makePipe();
    ::ConnectNamedPipe(pipe, nullptr);
    LONG reply = 0;
    DWORD moved = 9;
    EXPECT_TRUE(::ReadFile(pipe, &reply, 4, &moved, nullptr));
    EXPECT_EQ(reply, 0x070707);
    EXPECT_EQ(moved, 3u);
    EXPECT_FALSE(::ReadFile(pipe, &reply, 4, &moved, nullptr));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_BROKEN_PIPE});
    EXPECT_FALSE(::WriteFile(pipe, "a", 1, &moved, nullptr));
    client.connectError = ERROR_NO_DATA;
    const HANDLE refused = makePipe();
    EXPECT_FALSE(::ConnectNamedPipe(refused, nullptr));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_NO_DATA});
    EXPECT_EQ(makePipe(), INVALID_HANDLE_VALUE);  // two instances at most
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_PIPE_BUSY});
}

TEST_F(Machine, PrintersAndTheirData) {
    system.addPrinter("Office", "ABCD");
    HANDLE printer = nullptr;
    char office[] = "office";
    char unknown[] = "unknown";
    char value[] = "Printer Prefix";
    EXPECT_FALSE(::OpenPrinterA(unknown, &printer, nullptr));
    ASSERT_TRUE(::OpenPrinterA(office, &printer, nullptr));
    BYTE data[260] = {};
    DWORD needed = 0;
    system.greedyBuffers = true;
    EXPECT_EQ(::GetPrinterDataA(printer, value, nullptr, data, sizeof(data), &needed), 0u);
    EXPECT_STREQ(reinterpret_cast<char*>(data), "ABCD");
    EXPECT_EQ(data[259], 'Z');
    EXPECT_EQ(::GetPrinterDataA(printer, value, nullptr, data, 4, &needed), DWORD{ERROR_MORE_DATA});
    EXPECT_TRUE(::ClosePrinter(printer));
}

TEST_F(Machine, LibrariesAndEntryPointsByVersion) {
    const HMODULE kernel = ::GetModuleHandleA("kernel32");
    EXPECT_NE(::GetProcAddress(kernel, "IsWow64Process"), nullptr);
    EXPECT_EQ(::LoadLibraryA("DEMOcfg.dll"), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    system.installConfig();
    const HMODULE config = ::LoadLibraryA("DEMOcfg.dll");
    ASSERT_NE(config, nullptr);
    using GetConfig = DWORD (*)(DWORD, DWORD, DWORD, char*, DWORD*);
    const auto getConfig = functionAt<GetConfig>(::GetProcAddress(config, "GetConfigData"));
    DWORD size = 0;
    EXPECT_EQ(getConfig(0, 10002, 0, nullptr, &size), 3u);
    EXPECT_EQ(size, sizeof("SOFTWARE\\Demo"));
    EXPECT_TRUE(::FreeLibrary(config));
    EXPECT_FALSE(::FreeLibrary(config));
    const HMODULE wts = ::LoadLibraryA("C:\\WINDOWS\\system32\\wtsapi32.dll");
    EXPECT_NE(::GetProcAddress(wts, "WTSQueryUserToken"), nullptr);
    system.modules.hideFunction("WTSQueryUserToken");
    EXPECT_EQ(::GetProcAddress(wts, "WTSQueryUserToken"), nullptr);
}

}  // namespace
}  // namespace vok::test
