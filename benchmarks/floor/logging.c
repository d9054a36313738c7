/* The logging of one exported call: made anew, written record by record, taken down. */
#include <string.h>
#include <vok/config_library.h>

#include "floor.h"

typedef struct Option {
    const char* name;
    DWORD preset;
    DWORD value;
    DWORD stamp;
    BOOL isRead;
} Option;

enum { startLog, allMask, ownMask, clockField, processField, threadField, optionCount };

enum { optionAge = 5000, categoryWidth = 10 };

static Option options[optionCount] = {{"startLog", 0, 0, 0, FALSE},
                                      {"All", 0xFFFFFFFF, 0, 0, FALSE},
                                      {"VOK", 1, 0, 0, FALSE},
                                      {"Clocktime_In_Header", 1, 0, 0, FALSE},
                                      {"Proc_Id_In_Header", 0, 0, 0, FALSE},
                                      {"Thread_Id_In_Header", 0, 0, 0, FALSE}};

static BOOL hasLogger;
static char basePath[pathSize + 16];
static char loggerPath[pathSize + 40];
static char logPath[pathSize + 20];
static HANDLE mutex;
static OpenSecurity fileSecurity;
static CRITICAL_SECTION depthLock;
static int depth;

/* A key, and the descriptor that would be given to it if it were made. */
typedef struct Key {
    HKEY handle;
    OpenSecurity security;
} Key;

static BOOL isWow64(void) {
    typedef BOOL(WINAPI * IsWow64ProcessFn)(HANDLE, BOOL*);
    const IsWow64ProcessFn function = (IsWow64ProcessFn)(void (*)(void))GetProcAddress(
        GetModuleHandleA("kernel32"), "IsWow64Process");
    BOOL ignored = FALSE;
    return function != NULL && function(GetCurrentProcess(), &ignored);
}

static void openKey(Key* key, const char* path) {
    makeOpenSecurity(&key->security, TRUE);
    const REGSAM view = isWow64() ? KEY_WOW64_64KEY : 0;
    RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS | view, &key->handle);
}

static void closeKey(Key* key) {
    RegCloseKey(key->handle);
    freeOpenSecurity(&key->security);
}

static void openLoggerKey(Key* key) {
    openKey(key, basePath);
    closeKey(key);
    openKey(key, loggerPath);
}

static BOOL readNumber(HKEY key, const char* name, DWORD* value) {
    DWORD type = 0;
    DWORD size = sizeof *value;
    return RegQueryValueExA(key, name, NULL, &type, (BYTE*)value, &size) == ERROR_SUCCESS;
}

static DWORD readOption(const Option* option) {
    DWORD value = 0;
    Key key;
    openLoggerKey(&key);
    if (!readNumber(key.handle, option->name, &value)) {
        value = option->preset;
        RegSetValueExA(key.handle, option->name, 0, REG_DWORD, (BYTE*)&value, sizeof value);
    }
    closeKey(&key);
    return value;
}

static DWORD option(int which) {
    Option* const cached = &options[which];
    const DWORD now = GetTickCount();
    if (!cached->isRead || now <= cached->stamp || now - cached->stamp >= optionAge) {
        cached->value = readOption(cached);
        cached->stamp = now;
        cached->isRead = TRUE;
    }
    return cached->value;
}

static BOOL readCommonLog(void) {
    DWORD common = 0;
    Key key;
    openLoggerKey(&key);
    readNumber(key.handle, "CommonLog", &common);
    if (common != 1) {
        const DWORD off = 0;
        RegSetValueExA(key.handle, "CommonLog", 0, REG_DWORD, (const BYTE*)&off, sizeof off);
    }
    readNumber(key.handle, "CommonLog", &common);
    closeKey(&key);
    return common == 1;
}

/* Asks the configuration library for the base path; the library, to be freed, or null. */
static HMODULE readBasePath(const char* prefix, BOOL* found) {
    char directory[pathSize] = {0};
    DWORD size = 0;
    GetPrinterDriverDirectoryA(NULL, NULL, 1, (BYTE*)directory, sizeof directory, &size);
    char name[16];
    strcpy(putText(name, prefix), VOK_CONFIG_LIBRARY_FILE);
    EnterCriticalSection(&configLock);
    const HMODULE library = LoadLibraryA(name);
    LeaveCriticalSection(&configLock);
    const GetConfigDataFn read =
        (GetConfigDataFn)(void (*)(void))GetProcAddress(library, VOK_EXPORT_GET_CONFIG_DATA);
    size = 0;
    *found = read(0, VOK_CONFIG_REGISTRY_BASE, 0, NULL, &size) == VOK_CONFIG_SIZE_REPORTED;
    read(0, VOK_CONFIG_REGISTRY_BASE, 0, basePath, &size);
    strcpy(putText(loggerPath, basePath), "\\XFiles\\Logger");
    return library;
}

static void makeLogger(const char* prefix) {
    char fileName[32];
    strcpy(putText(fileName, prefix), readCommonLog() ? "XFiles.log" : "Vok.log");
    InitializeCriticalSection(&depthLock);
    makeOpenSecurity(&fileSecurity, FALSE);

    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, NULL, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    char mutexName[48];
    strcpy(putText(mutexName, "ZELOG_"), fileName);
    mutex = CreateMutexA(&attributes, FALSE, mutexName);

    GetWindowsDirectoryA(logPath, pathSize + 1);
    strcpy(logPath + 3, fileName);
    for (int i = 0; i < optionCount; ++i) {
        options[i].isRead = FALSE;
    }
    depth = 0;
    hasLogger = TRUE;
}

void beginCall(const char* exportName) {
    char path[pathSize] = {0};
    GetModuleFileNameA(floorModule, path, sizeof path);
    char prefix[VOK_MODEL_PREFIX_LENGTH + 1] = {0};
    memcpy(prefix, strrchr(path, '\\') + 1, VOK_MODEL_PREFIX_LENGTH);
    BOOL found = FALSE;
    EnterCriticalSection(&createLock);
    const HMODULE library = readBasePath(prefix, &found);
    if (found) {
        makeLogger(prefix);
    }
    EnterCriticalSection(&configLock);
    FreeLibrary(library);
    LeaveCriticalSection(&configLock);
    LeaveCriticalSection(&createLock);
    trace(exportName);
}

void endCall(void) {
    EnterCriticalSection(&createLock);
    if (hasLogger) {
        CloseHandle(mutex);
        freeOpenSecurity(&fileSecurity);
        DeleteCriticalSection(&depthLock);
        hasLogger = FALSE;
    }
    LeaveCriticalSection(&createLock);
}

BOOL isLogged(DWORD level) {
    if (!hasLogger || option(startLog) == 0) {
        return FALSE;
    }
    const DWORD all = option(allMask);
    return (level & (all | option(ownMask))) != 0;
}

static char* putClock(char* to) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    to = putPadded(to, now.wYear, 10, 4);
    *to++ = '/';
    to = putPadded(to, now.wMonth, 10, 2);
    *to++ = '/';
    to = putPadded(to, now.wDay, 10, 2);
    *to++ = '-';
    to = putPadded(to, now.wHour, 10, 2);
    *to++ = ':';
    to = putPadded(to, now.wMinute, 10, 2);
    *to++ = ':';
    to = putPadded(to, now.wSecond, 10, 2);
    *to++ = '.';
    to = putPadded(to, now.wMilliseconds, 10, 3);
    *to++ = ' ';
    return to;
}

static char* putId(char* to, const char* label, DWORD id) {
    to = putPadded(putText(to, label), id, 16, 4);
    *to++ = ' ';
    return to;
}

static int addDepth(int change) {
    EnterCriticalSection(&depthLock);
    const int result = depth += change;
    LeaveCriticalSection(&depthLock);
    return result;
}

static HANDLE openLog(DWORD disposition) {
    return CreateFileA(logPath, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       &fileSecurity.attributes, disposition, FILE_ATTRIBUTE_NORMAL, NULL);
}

static void append(const char* line, DWORD length) {
    CloseHandle(openLog(OPEN_EXISTING));
    const HANDLE file = openLog(OPEN_ALWAYS);
    DWORD highSize = 0;
    const DWORD size = GetFileSize(file, &highSize);
    SetFilePointer(file, (LONG)size, NULL, FILE_BEGIN);
    DWORD written = 0;
    WriteFile(file, line, length, &written, NULL);
    CloseHandle(file);
}

void writeLine(const char* text, const char* end) {
    const BOOL clock = option(clockField) != 0;
    const BOOL process = option(processField) != 0;
    const BOOL thread = option(threadField) != 0;
    WaitForSingleObject(mutex, INFINITE);
    const DWORD owner = GetCurrentThreadId();

    char line[lineSize];
    char* to = clock ? putClock(line) : line;
    to = process ? putId(to, "pid=", GetCurrentProcessId()) : to;
    const DWORD id = GetCurrentThreadId();
    to = thread ? putId(to, "tid=", id) : to;
    to = putText(to, "VOK        ");
    for (int blanks = addDepth(0); blanks > 0; --blanks) {
        *to++ = ' ';
    }
    memcpy(to, text, (size_t)(end - text));
    to = putText(to + (end - text), "\r\n");
    append(line, (DWORD)(to - line));
    if (GetCurrentThreadId() == owner) {
        ReleaseMutex(mutex);
    }
}

void trace(const char* name) {
    const BOOL isNamed = isLogged(level_trace);
    if (!isLogged(level_trace)) {
        return;
    }
    char text[64] = "+";
    const char* const end = putText(text + 1, isNamed ? name : "");
    writeLine(text, end);
    GetCurrentThreadId();
    addDepth(1);
    GetCurrentThreadId();
    addDepth(-1);
    text[0] = '-';
    writeLine(text, end);
}

void logText(const char* text) {
    if (isLogged(level_detail)) {
        writeLine(text, text + strlen(text));
    }
}

void logTwo(const char* text, const char* more) {
    if (isLogged(level_detail)) {
        char line[lineSize];
        writeLine(line, putText(putText(line, text), more));
    }
}

void logNumber(const char* text, DWORD number) {
    if (isLogged(level_detail)) {
        char line[lineSize];
        writeLine(line, putNumber(putText(line, text), number));
    }
}

void logHandle(const char* text, const void* handle) {
    if (isLogged(level_detail)) {
        char line[lineSize];
        writeLine(line, putHandle(putText(line, text), handle));
    }
}

void logReply(const char* text, LRESULT reply) {
    if (isLogged(level_detail)) {
        char line[lineSize];
        writeLine(line, putReply(putText(line, text), reply));
    }
}
