/* The launch of a job whose companions run already. */
#include <string.h>

#include "floor.h"

typedef DWORD(WINAPI* ConsoleSessionFn)(void);
typedef BOOL(WINAPI* SessionOfProcessFn)(DWORD, DWORD*);

static HMODULE loadSystemLibrary(const char* name) {
    char path[pathSize + 20] = {0};
    GetSystemDirectoryA(path, pathSize);
    strcpy(putText(path + strlen(path), "\\"), name);
    return LoadLibraryA(path);
}

static BOOL spoolerIsApart(void) {
    const int family = osFamily();
    if (family != 3 && family != 6) {
        return FALSE;
    }
    trace("FindOutSessionInfo");
    const HMODULE terminalServices = loadSystemLibrary("wtsapi32.dll");
    const HMODULE kernel = loadSystemLibrary("kernel32.dll");
    GetProcAddress(terminalServices, "WTSQueryUserToken");
    const ConsoleSessionFn consoleSession =
        (ConsoleSessionFn)(void (*)(void))GetProcAddress(kernel, "WTSGetActiveConsoleSessionId");
    const DWORD console = consoleSession();
    const SessionOfProcessFn sessionOfProcess =
        (SessionOfProcessFn)(void (*)(void))GetProcAddress(kernel, "ProcessIdToSessionId");
    DWORD own = 0;
    sessionOfProcess(GetCurrentProcessId(), &own);
    return console != own;
}

static void readPrefix(char prefix[VOK_MODEL_PREFIX_LENGTH + 1]) {
    char path[pathSize] = {0};
    GetModuleFileNameA(floorModule, path, sizeof path);
    logTwo("The module name = ", path);
    const char* const name = strrchr(path, '\\');
    logTwo("Got The File Name! File Name = ", name);
    memcpy(prefix, name + 1, VOK_MODEL_PREFIX_LENGTH);
    prefix[VOK_MODEL_PREFIX_LENGTH] = '\0';
}

static void join(char* to, const char* first, const char* second, const char* third) {
    *putText(putText(putText(to, first), second), third) = '\0';
}

static HANDLE makePipe(const char* namePrefix, const char* friendlyName) {
    char name[pathSize];
    join(name, namePrefix, friendlyName, "");
    static SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, NULL, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, TRUE};
    return CreateNamedPipeA(name, PIPE_ACCESS_DUPLEX, 0, VOK_PIPE_INSTANCES, VOK_PIPE_BUFFER_SIZE,
                            VOK_PIPE_BUFFER_SIZE, VOK_PIPE_DEFAULT_TIMEOUT, &attributes);
}

static HANDLE openPrinter(const char* friendlyName) {
    HANDLE printer = NULL;
    OpenPrinterA((char*)friendlyName, &printer, NULL);
    return printer;
}

static HANDLE startDralXP(const char* friendlyName, VKDATA* record) {
    trace("StartDRALXP");
    char prefix[VOK_MODEL_PREFIX_LENGTH + 1];
    readPrefix(prefix);
    const BOOL isApart = spoolerIsApart();
    logText(isApart ? "Using Pipes in StartDral" : "Using Messages in StartDRALXP");
    const HANDLE printer = openPrinter(friendlyName);
    record->dralMode = isApart ? VOK_MODE_PIPE : VOK_MODE_WINDOW;
    char title[pathSize];
    join(title, prefix, VOK_DRAL_TITLE, friendlyName);
    logTwo("dral title - ", title);
    HANDLE result = FindWindowA(NULL, title);
    if (isApart) {
        logText("The DRAL is already running");
        result = makePipe(VOK_DRAL_PIPE, friendlyName);
    }
    ClosePrinter(printer);
    if (isApart) {
        logHandle("Return from StartDRALXP Pipes. Dral HPIPE = ", result);
    }
    return result;
}

static HANDLE startNembByPipe(const char* friendlyName, const char* prefix, VKDATA* record) {
    logText("Using Pipes in StartNembXP");
    const HANDLE printer = openPrinter(friendlyName);
    record->nembMode = VOK_MODE_PIPE;
    char title[pathSize];
    join(title, prefix, VOK_NEMB_TITLE, friendlyName);
    logTwo("nemb title - ", title);
    FindWindowA(NULL, title);
    logText("Nemb is already running! Create Pipe regardless");
    const HANDLE pipe = makePipe(VOK_NEMB_PIPE, friendlyName);
    logHandle("Nemb HPIPE from CreateNamedPipe = ", pipe);
    ClosePrinter(printer);
    logHandle("Return from StartNEMBXP Pipes. Nemb HPIPE = ", pipe);
    return pipe;
}

static HANDLE startNembByMessages(const char* friendlyName, VKDATA* record) {
    logText("Using Messages in StartNembXP");
    const HANDLE printer = openPrinter(friendlyName);
    record->nembMode = VOK_MODE_WINDOW;
    char path[pathSize];
    join(path, "System\\CurrentControlSet\\control\\Print\\Printers\\", friendlyName,
         "\\PrinterDriverData");
    HKEY key = NULL;
    char prefix[pathSize] = {0};
    DWORD size = 50;
    RegOpenKeyA(HKEY_LOCAL_MACHINE, path, &key);
    RegQueryValueExA(key, VOK_PRINTER_PREFIX_VALUE, NULL, NULL, (BYTE*)prefix, &size);
    RegCloseKey(key);
    char className[pathSize];
    char title[pathSize];
    join(className, prefix, VOK_NEMB_TITLE, "");
    join(title, className, friendlyName, "");
    const HWND window = FindWindowA(className, title);
    ClosePrinter(printer);
    return window;
}

static HANDLE startNembXP(const char* friendlyName, VKDATA* record) {
    trace("StartNEMBXP");
    char prefix[VOK_MODEL_PREFIX_LENGTH + 1];
    readPrefix(prefix);
    return spoolerIsApart() ? startNembByPipe(friendlyName, prefix, record)
                            : startNembByMessages(friendlyName, record);
}

static HANDLE startDral9X(const char* friendlyName, const VKDATA* record) {
    const HANDLE printer = openPrinter(friendlyName);
    char title[pathSize];
    join(title, VOK_DRAL_TITLE, friendlyName, "");
    logTwo("Searching Dral Title = ", title);
    char className[pathSize];
    join(className, VOK_DRAL_HIDDEN, record->dralTitleSuffix, "");
    const HWND window = FindWindowA(className, title);
    logHandle("hDRAL = ", window);
    ClosePrinter(printer);
    return window;
}

static HANDLE startNemb9X(const char* friendlyName) {
    trace("StartNEMB9X");
    const HANDLE printer = openPrinter(friendlyName);
    char prefix[VOK_MODEL_PREFIX_LENGTH + 1];
    readPrefix(prefix);
    char className[pathSize];
    char title[pathSize];
    join(className, prefix, VOK_NEMB_TITLE, "");
    join(title, className, friendlyName, "");
    const HWND window = FindWindowA(className, title);
    logHandle("hNEMB =  ", window);
    ClosePrinter(printer);
    return window;
}

BOOL VOKLaunchXFiles(const char* friendlyName, const char* portName, VKDATA* record) {
    const DWORD startTime = GetTickCount();
    beginCall("VOKLaunchXFiles");
    if (isLogged(level_detail)) {
        char line[lineSize];
        char* const end = putText(putText(line, "FriendlyName = "), friendlyName);
        writeLine(line, putText(putText(end, ", PortName = "), portName));
    }
    record->hDRAL = osFamily() == family_9x ? startDral9X(friendlyName, record)
                                            : startDralXP(friendlyName, record);
    record->hNEMB =
        osFamily() == family_9x ? startNemb9X(friendlyName) : startNembXP(friendlyName, record);
    logNumber("rc = TRUE from VOKLaunchXFiles StartJobTime=", startTime);
    endCall();
    return TRUE;
}
