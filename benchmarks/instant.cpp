#include "instant.h"

#include <winspool.h>

#include <atomic>
#include <cstring>
#include <map>
#include <string>

namespace vok::bench {
namespace {

constexpr char libraryPath[] =
    "C:\\WINDOWS\\system32\\spool\\prtprocs\\x64\\" VOK_MODEL_PREFIX "vok.dll";
constexpr char systemDirectory[] = "C:\\WINDOWS\\system32";
constexpr char windowsDirectory[] = "C:\\WINDOWS";
constexpr char driverDirectory[] = "C:\\WINDOWS\\system32\\spool\\drivers\\x64";
constexpr char basePath[] = "SOFTWARE\\Demo";

Route theRoute = Route::message;
DWORD startLog = 0;
DWORD extraFields = 0;
std::atomic<DWORD> tick = 1000;

template <class Handle>
Handle handle(ULONG_PTR number) {
    return reinterpret_cast<Handle>(number);
}

template <size_t size>
DWORD give(const char (&text)[size], void* buffer) {
    std::memcpy(buffer, text, size);
    return size - 1;
}

BOOL WINAPI closeHandle(HANDLE) {
    return TRUE;
}
BOOL WINAPI connectNamedPipe(HANDLE, OVERLAPPED*) {
    SetLastError(ERROR_PIPE_CONNECTED);
    return FALSE;
}
HANDLE WINAPI createFile(LPCSTR, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) {
    return handle<HANDLE>(0x100);
}
HANDLE WINAPI createMutex(SECURITY_ATTRIBUTES*, BOOL, LPCSTR) {
    return handle<HANDLE>(0x104);
}
HANDLE WINAPI createNamedPipe(LPCSTR, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD,
                              SECURITY_ATTRIBUTES*) {
    return handle<HANDLE>(0x108);
}
BOOL WINAPI disconnectNamedPipe(HANDLE) {
    return TRUE;
}
BOOL WINAPI freeLibrary(HMODULE) {
    return TRUE;
}
DWORD WINAPI getFileSize(HANDLE, DWORD* high) {
    *high = 0;
    return 1000;
}
void WINAPI getLocalTime(SYSTEMTIME* time) {
    *time = {2024, 3, 4, 7, 9, 5, 1, 42};
}
DWORD WINAPI getModuleFileName(HMODULE, LPSTR buffer, DWORD) {
    return give(libraryPath, buffer);
}
HMODULE WINAPI getModuleHandle(LPCSTR) {
    return handle<HMODULE>(0x10000);
}
DWORD WINAPI getConfigData(DWORD, DWORD, DWORD, char* buffer, DWORD* size) {
    if (buffer == nullptr) {
        *size = sizeof basePath;
        return 3;
    }
    give(basePath, buffer);
    return 0;
}
BOOL WINAPI isWow64Process(HANDLE, BOOL*) {
    return TRUE;
}
DWORD WINAPI consoleSession() {
    return 1;
}
BOOL WINAPI sessionOfProcess(DWORD, DWORD* session) {
    *session = theRoute == Route::pipe ? 0 : 1;
    return TRUE;
}
template <class Function>
FARPROC procedure(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}
FARPROC WINAPI getProcAddress(HMODULE, LPCSTR name) {
    switch (name[0]) {
        case 'G':
            return procedure(getConfigData);
        case 'I':
            return theRoute == Route::nineX ? nullptr : procedure(isWow64Process);
        case 'P':
            return procedure(sessionOfProcess);
        default:
            return procedure(consoleSession);
    }
}
UINT WINAPI getSystemDirectory(LPSTR buffer, UINT) {
    return give(systemDirectory, buffer);
}
DWORD WINAPI getTickCount() {
    const DWORD now = tick.load(std::memory_order_relaxed) + 1;
    tick.store(now, std::memory_order_relaxed);
    return now;
}
BOOL WINAPI getVersion(OSVERSIONINFOA* version) {
    const bool is9x = theRoute == Route::nineX;
    version->dwMajorVersion = is9x ? 4 : 5;
    version->dwMinorVersion = is9x ? 10 : 1;
    version->dwPlatformId = is9x ? VER_PLATFORM_WIN32_WINDOWS : VER_PLATFORM_WIN32_NT;
    return TRUE;
}
UINT WINAPI getWindowsDirectory(LPSTR buffer, UINT) {
    return give(windowsDirectory, buffer);
}
HMODULE WINAPI loadLibrary(LPCSTR) {
    return handle<HMODULE>(0x20000);
}
BOOL WINAPI readFile(HANDLE, void* buffer, DWORD size, DWORD* moved, OVERLAPPED*) {
    const LONG reply = YESPRINT;
    std::memcpy(buffer, &reply, sizeof reply);
    *moved = size;
    return TRUE;
}
BOOL WINAPI releaseMutex(HANDLE) {
    return TRUE;
}
DWORD WINAPI setFilePointer(HANDLE, LONG position, LONG*, DWORD) {
    return static_cast<DWORD>(position);
}
void WINAPI sleep(DWORD) {}
DWORD WINAPI waitForSingleObject(HANDLE, DWORD) {
    return WAIT_OBJECT_0;
}
BOOL WINAPI writeFile(HANDLE, const void*, DWORD size, DWORD* moved, OVERLAPPED*) {
    *moved = size;
    return TRUE;
}

SID everyone = {SID_REVISION, 1, {SECURITY_WORLD_SID_AUTHORITY}, {SECURITY_WORLD_RID}};
ACE_HEADER firstEntry;

BOOL WINAPI initializeSecurityDescriptor(void*, DWORD) {
    return TRUE;
}
BOOL WINAPI setSecurityDescriptorDacl(void*, BOOL, ACL*, BOOL) {
    return TRUE;
}
BOOL WINAPI allocateSid(SID_IDENTIFIER_AUTHORITY*, BYTE, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD,
                        DWORD, DWORD, void** sid) {
    *sid = &everyone;
    return TRUE;
}
BOOL WINAPI isValidSid(void*) {
    return TRUE;
}
DWORD WINAPI getLengthSid(void*) {
    return sizeof everyone;
}
BOOL WINAPI initializeAcl(ACL*, DWORD, DWORD) {
    return TRUE;
}
BOOL WINAPI addAccessAllowedAce(ACL*, DWORD, DWORD, void*) {
    return TRUE;
}
BOOL WINAPI getAce(ACL*, DWORD, void** entry) {
    *entry = &firstEntry;
    return TRUE;
}
void* WINAPI freeSid(void*) {
    return nullptr;
}

LONG WINAPI regOpenKeyEx(HKEY, LPCSTR, DWORD, REGSAM, HKEY* key) {
    *key = handle<HKEY>(0x200);
    return ERROR_SUCCESS;
}
LONG WINAPI regOpenKey(HKEY, LPCSTR, HKEY* key) {
    *key = handle<HKEY>(0x204);
    return ERROR_SUCCESS;
}
LONG WINAPI regCloseKey(HKEY) {
    return ERROR_SUCCESS;
}
// "CommonLog", "startLog", "All", "VOK", the header's fields; or the printer's "Printer Prefix".
DWORD optionValue(const char* name) {
    switch (name[0]) {
        case 's':
            return startLog;
        case 'A':
            return 0xFFFFFFFF;
        case 'C':
            return name[1] == 'l' ? 1 : 0;
        case 'P':
        case 'T':
            return extraFields;
        default:
            return 1;
    }
}
LONG WINAPI regQueryValue(HKEY, LPCSTR name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    if (name[0] == 'P' && name[2] == 'i') {
        *size = give(VOK_MODEL_PREFIX, data) + 1;
        return ERROR_SUCCESS;
    }
    const DWORD value = optionValue(name);
    std::memcpy(data, &value, sizeof value);
    *size = sizeof value;
    *type = REG_DWORD;
    return ERROR_SUCCESS;
}
LONG WINAPI regSetValue(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD) {
    return ERROR_SUCCESS;
}

HWND WINAPI findWindow(LPCSTR, LPCSTR) {
    return handle<HWND>(0x300);
}
LRESULT WINAPI sendMessage(HWND, UINT, WPARAM, LPARAM) {
    return YESPRINT;
}
BOOL WINAPI postMessage(HWND, UINT, WPARAM, LPARAM) {
    return TRUE;
}
BOOL WINAPI openPrinter(LPSTR, HANDLE* printer, PRINTER_DEFAULTSA*) {
    *printer = handle<HANDLE>(0x400);
    return TRUE;
}
BOOL WINAPI closePrinter(HANDLE) {
    return TRUE;
}
BOOL WINAPI getPrinterDriverDirectory(LPSTR, LPSTR, DWORD, BYTE* buffer, DWORD, DWORD* needed) {
    *needed = give(driverDirectory, buffer) + 1;
    return TRUE;
}

template <class Function>
void* untyped(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

void setInstantMachine(Route route, Logging logging) {
    theRoute = route;
    startLog = logging == Logging::off ? 0 : 1;
    extraFields = logging == Logging::full ? 1 : 0;
}

Job instantJob() {
    Job job;
    job.dral = handle<HANDLE>(0x5001230C);
    job.nemb = handle<HANDLE>(0x50012310);
    job.dralSuffix = "Office";
    return job;
}

std::map<std::string, void*> instantAnswers() {
    // Locks, the last error and what a thread knows of itself are as without the simulation.
    return {{"EnterCriticalSection", untyped(EnterCriticalSection)},
            {"LeaveCriticalSection", untyped(LeaveCriticalSection)},
            {"InitializeCriticalSection", untyped(InitializeCriticalSection)},
            {"DeleteCriticalSection", untyped(DeleteCriticalSection)},
            {"GetLastError", untyped(GetLastError)},
            {"SetLastError", untyped(SetLastError)},
            {"GetCurrentThreadId", untyped(GetCurrentThreadId)},
            {"GetCurrentProcessId", untyped(GetCurrentProcessId)},
            {"GetCurrentProcess", untyped(GetCurrentProcess)},
            {"CloseHandle", untyped(closeHandle)},
            {"ConnectNamedPipe", untyped(connectNamedPipe)},
            {"CreateFileA", untyped(createFile)},
            {"CreateMutexA", untyped(createMutex)},
            {"CreateNamedPipeA", untyped(createNamedPipe)},
            {"DisconnectNamedPipe", untyped(disconnectNamedPipe)},
            {"FreeLibrary", untyped(freeLibrary)},
            {"GetFileSize", untyped(getFileSize)},
            {"GetLocalTime", untyped(getLocalTime)},
            {"GetModuleFileNameA", untyped(getModuleFileName)},
            {"GetModuleHandleA", untyped(getModuleHandle)},
            {"GetProcAddress", untyped(getProcAddress)},
            {"GetSystemDirectoryA", untyped(getSystemDirectory)},
            {"GetTickCount", untyped(getTickCount)},
            {"GetVersionExA", untyped(getVersion)},
            {"GetWindowsDirectoryA", untyped(getWindowsDirectory)},
            {"LoadLibraryA", untyped(loadLibrary)},
            {"ReadFile", untyped(readFile)},
            {"ReleaseMutex", untyped(releaseMutex)},
            {"SetFilePointer", untyped(setFilePointer)},
            {"Sleep", untyped(sleep)},
            {"WaitForSingleObject", untyped(waitForSingleObject)},
            {"WriteFile", untyped(writeFile)},
            {"InitializeSecurityDescriptor", untyped(initializeSecurityDescriptor)},
            {"SetSecurityDescriptorDacl", untyped(setSecurityDescriptorDacl)},
            {"AllocateAndInitializeSid", untyped(allocateSid)},
            {"IsValidSid", untyped(isValidSid)},
            {"GetLengthSid", untyped(getLengthSid)},
            {"InitializeAcl", untyped(initializeAcl)},
            {"AddAccessAllowedAce", untyped(addAccessAllowedAce)},
            {"GetAce", untyped(getAce)},
            {"FreeSid", untyped(freeSid)},
            {"RegOpenKeyExA", untyped(regOpenKeyEx)},
            {"RegOpenKeyA", untyped(regOpenKey)},
            {"RegCloseKey", untyped(regCloseKey)},
            {"RegQueryValueExA", untyped(regQueryValue)},
            {"RegSetValueExA", untyped(regSetValue)},
            {"FindWindowA", untyped(findWindow)},
            {"SendMessageA", untyped(sendMessage)},
            {"PostMessageA", untyped(postMessage)},
            {"OpenPrinterA", untyped(openPrinter)},
            {"ClosePrinter", untyped(closePrinter)},
            {"GetPrinterDriverDirectoryA", untyped(getPrinterDriverDirectory)}};
}

}  // namespace vok::bench
