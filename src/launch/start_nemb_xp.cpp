#include <vok/companion.h>

#include "launch/companion_pipe.h"
#include "launch/companion_search.h"
#include "launch/nemb_names.h"
#include "launch/printer_lookup.h"
#include "launch/program_launch.h"
#include "launch/start_nemb.h"
#include "launch/user_session.h"
#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/text.h"

namespace vok {

namespace {

// Bytes of the printer's prefix that the registry may yield.
constexpr DWORD registryPrefixSize = 50;

bool launchForPipe(const char* friendlyName, const char* portName, VKDATA* record,
                   const NameBuffer& prefix) {
    NameBuffer commandLine;
    if (GetPrinterDriverDir(commandLine.data(), NameBuffer::size) == 0) {
        return false;
    }
    NameBuffer fileName = prefix;
    fileName << VOK_NEMB_EXE;
    logLine({"nemb path - ", fileName.text()});
    commandLine << fileName;
    appendNembArguments(commandLine, friendlyName);
    if (LaunchProgram(commandLine.text(), portName, record, companionNemb) == nullptr) {
        return false;
    }
    logLaunchingNemb(commandLine);
    return true;
}

// False when NEMB doesn't run and can't be started. Its window may be in another session, where
// its mutex is all that can be seen of it.
bool findOrLaunchForPipe(const char* friendlyName, const char* portName, VKDATA* record,
                         const NameBuffer& prefix) {
    const NameBuffer title = nembTitle(prefix, friendlyName);
    logLine({"nemb title - ", title.text()});
    if (FindWindowA(nullptr, title.text()) != nullptr || IsXFileRunning(title.text())) {
        logLine("Nemb is already running! Create Pipe regardless");
        return true;
    }
    return launchForPipe(friendlyName, portName, record, prefix);
}

HANDLE startByPipe(const char* friendlyName, const char* portName, VKDATA* record,
                   const NameBuffer& prefix) {
    logLine("Using Pipes in StartNembXP");
    CompanionPipe pipe;
    // A block of its own, so that the printer is closed before the last line is written.
    {
        const PrinterHold printer(friendlyName);
        if (!printer.isOpen()) {
            return nullptr;
        }
        record->nembMode = VOK_MODE_PIPE;
        if (findOrLaunchForPipe(friendlyName, portName, record, prefix)) {
            pipe = createCompanionPipe(VOK_NEMB_PIPE, friendlyName);
            logLine({"Nemb HPIPE from CreateNamedPipe = ", toString(pipe.get())});
        }
    }
    logLine({"Return from StartNEMBXP Pipes. Nemb HPIPE = ", toString(pipe.get())});
    return pipe.release();
}

// The prefix that the printer's driver data names, empty when the printer has no such key. False
// when the key lacks the value; the key then stays open.
bool readRegistryPrefix(const char* friendlyName, NameBuffer& prefix) {
    NameBuffer path("System\\CurrentControlSet\\control\\Print\\Printers\\");
    path << friendlyName << "\\PrinterDriverData";
    HKEY key = nullptr;
    if (RegOpenKeyA(HKEY_LOCAL_MACHINE, path.text(), &key) != ERROR_SUCCESS) {
        return true;
    }
    DWORD size = registryPrefixSize;
    if (RegQueryValueExA(key, VOK_PRINTER_PREFIX_VALUE, nullptr, nullptr,
                         reinterpret_cast<BYTE*>(prefix.data()), &size) != ERROR_SUCCESS) {
        logLine("Did not find matching printer in Registry ");
        return false;
    }
    RegCloseKey(key);
    return true;
}

HWND launchByMessages(const char* friendlyName, const NameBuffer& prefix,
                      const NameBuffer& className, const NameBuffer& title) {
    NameBuffer commandLine;
    if (GetPrinterDriverDir(commandLine.data(), NameBuffer::size) == 0) {
        return nullptr;
    }
    // In small letters by messages and in capitals by pipe, as the command line has always had it.
    commandLine << prefix << "nemb.exe";
    appendNembArguments(commandLine, friendlyName);
    if (!winExec(commandLine.text(), SW_SHOW)) {
        return nullptr;
    }
    logLaunchingNemb(commandLine);
    const HWND window = FindWindowA(className.text(), title.text());
    logLine({"WinExec rc = 0", ". Nemb HWND = ", toString(window)});
    return window;
}

HWND startByMessages(const char* friendlyName, VKDATA* record) {
    logLine("Using Messages in StartNembXP");
    PrinterHold printer(friendlyName);
    if (!printer.isOpen()) {
        return nullptr;
    }
    record->nembMode = VOK_MODE_WINDOW;
    NameBuffer prefix;
    if (!readRegistryPrefix(friendlyName, prefix)) {
        printer.keepOpen();
        return nullptr;
    }
    const NameBuffer className = nembClass(prefix);
    const NameBuffer title = nembTitle(prefix, friendlyName);
    const HWND running = FindWindowA(className.text(), title.text());
    return running != nullptr ? running : launchByMessages(friendlyName, prefix, className, title);
}

}  // namespace

HANDLE StartNEMBXP(const char* friendlyName, const char* portName, VKDATA* record) {
    traceCallQuietly("StartNEMBXP");
    const NameBuffer prefix = modelPrefix();
    if (spoolerIsApart()) {
        return startByPipe(friendlyName, portName, record, prefix);
    }
    return startByMessages(friendlyName, record);
}

}  // namespace vok
