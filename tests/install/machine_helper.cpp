// What the tests of the installer do to a machine:
//
//   machine_helper driver NAME DLL         registers a printer driver, all three parts of it that
//   DLL machine_helper event DLL PRINTER N     has a driver's configuration DLL told of an event
//   machine_helper restricted COMMAND      runs a command line for which nobody is an administrator
//   machine_helper hold FILE SIGN          keeps others from the file until there is a file SIGN
//
// Exit status: that of the command; else 0 done, 1 not, 2 misused.

#include <windows.h>

#include <winspool.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int fail(const char* what) {
    std::fprintf(stderr, "machine_helper: %s (error %lu)\n", what, GetLastError());
    return 1;
}

int addDriver(char* name, char* file) {
    char environment[] = "Windows x64";
    DRIVER_INFO_3A info = {};
    info.cVersion = 3;
    info.pName = name;
    info.pEnvironment = environment;
    info.pDriverPath = file;
    info.pDataFile = file;
    info.pConfigFile = file;
    const BOOL done = AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&info),
                                          APD_COPY_ALL_FILES | APD_COPY_FROM_DIRECTORY);
    return done != 0 ? 0 : fail("AddPrinterDriverEx");
}

int tellEvent(const char* file, const char* printer, const char* number) {
    const HMODULE library = LoadLibraryA(file);
    const auto tell = reinterpret_cast<BOOL(WINAPI*)(LPWSTR, int, DWORD, LPARAM)>(
        reinterpret_cast<void*>(GetProcAddress(library, "DrvPrinterEvent")));
    if (tell == nullptr) {
        return fail("DrvPrinterEvent");
    }
    std::array<wchar_t, MAX_PATH> name = {};
    MultiByteToWideChar(CP_ACP, 0, printer, -1, name.data(), static_cast<int>(name.size()));
    return tell(name.data(), std::atoi(number), 0, 0) != 0 ? 0 : fail("the driver refuses");
}

int runRestricted(std::string commandLine) {
    std::array<BYTE, SECURITY_MAX_SID_SIZE> administrators = {};
    DWORD size = static_cast<DWORD>(administrators.size());
    CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size);
    HANDLE own = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
    SID_AND_ATTRIBUTES denied = {administrators.data(), 0};
    HANDLE token = nullptr;
    if (CreateRestrictedToken(own, 0, 1, &denied, 0, nullptr, 0, nullptr, &token) == 0) {
        return fail("CreateRestrictedToken");
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessAsUserA(token, nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                             nullptr, &startup, &process) == 0) {
        return fail("CreateProcessAsUser");
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 1;
    GetExitCodeProcess(process.hProcess, &status);
    return static_cast<int>(status);
}

int hold(const char* file, const char* sign) {
    const HANDLE held = CreateFileA(file, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (held == INVALID_HANDLE_VALUE) {
        return fail("CreateFile");
    }
    std::puts("held");
    static_cast<void>(std::fflush(stdout));
    while (GetFileAttributesA(sign) == INVALID_FILE_ATTRIBUTES) {
        Sleep(100);
    }
    CloseHandle(held);
    return 0;
}

}  // namespace

int main(int count, char** words) {
    const std::string action = count > 1 ? words[1] : "";
    if (action == "driver" && count == 4) {
        return addDriver(words[2], words[3]);
    }
    if (action == "event" && count == 5) {
        return tellEvent(words[2], words[3], words[4]);
    }
    if (action == "restricted" && count == 3) {
        return runRestricted(words[2]);
    }
    if (action == "hold" && count == 4) {
        return hold(words[2], words[3]);
    }
    std::fprintf(stderr, "machine_helper: what?\n");
    return 2;
}
