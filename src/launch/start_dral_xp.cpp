#include <vok/companion.h>

#include <string>

#include "launch/companion_pipe.h"
#include "launch/hidden_window.h"
#include "launch/port_name.h"
#include "launch/printer_lookup.h"
#include "launch/program_launch.h"
#include "launch/start_dral.h"
#include "launch/user_session.h"
#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/text.h"

namespace vok {

namespace {

// What a start of DRAL works with.
struct DralLaunch {
    const char* friendlyName;
    const char* portName;
    VKDATA* record;
    NameBuffer hiddenWindow;
    NameBuffer prefix;

    // The window that DRAL shows while it serves this printer.
    HWND findByTitle() const {
        NameBuffer title;
        title << prefix << VOK_DRAL_TITLE << friendlyName;
        logLine({"dral title - ", title.text()});
        return FindWindowA(nullptr, title.text());
    }

    HWND findByHiddenClass() const { return FindWindowA(hiddenWindow.text(), nullptr); }

    NameBuffer fileName() const {
        NameBuffer name;
        name << prefix << VOK_DRAL_EXE;
        return name;
    }

    NameBuffer commandLine(const NameBuffer& directory) const {
        NameBuffer line;
        line << directory << fileName() << VOK_ARG_PRINTER << friendlyName;
        return line;
    }
};

void logLaunching(const NameBuffer& commandLine) {
    logLine({"Launching Dlar", ", Path = ", commandLine.text()});
}

// False when DRAL doesn't run and can't be started.
bool findOrLaunchForPipe(const DralLaunch& launch) {
    if (launch.findByTitle() != nullptr) {
        logLine("The DRAL is already running");
        return true;
    }
    NameBuffer directory;
    if (GetPrinterDriverDir(directory.data(), NameBuffer::size) == 0) {
        return false;
    }
    // In small letters by pipe and in capitals by messages: the line tells the routes apart.
    logLine({"dral path - ", launch.fileName().text()});
    const NameBuffer commandLine = launch.commandLine(directory);
    if (LaunchProgram(commandLine.text(), launch.portName, launch.record, companionDral) ==
        nullptr) {
        return false;
    }
    logLaunching(commandLine);
    return true;
}

HANDLE startByPipe(const DralLaunch& launch) {
    logLine("Using Pipes in StartDral");
    CompanionPipe pipe;
    // A block of its own, so that the printer is closed before the last line is written.
    {
        const PrinterHold printer(launch.friendlyName);
        if (!printer.isOpen()) {
            return nullptr;
        }
        launch.record->dralMode = VOK_MODE_PIPE;
        if (findOrLaunchForPipe(launch)) {
            pipe = createCompanionPipe(VOK_DRAL_PIPE, launch.friendlyName);
        }
    }
    logLine({"Return from StartDRALXP Pipes. Dral HPIPE = ", toString(pipe.get())});
    return pipe.release();
}

// A network port's DRAL runs in the user's context.
HWND launchForNetworkPort(const DralLaunch& launch, const std::string& localPort,
                          const NameBuffer& commandLine) {
    logLine({"P2P Port. Launching App in the user context. Port = ", localPort});
    if (LaunchProgram(commandLine.text(), launch.portName, launch.record, companionDral) ==
        nullptr) {
        logLine("Failed to launch Dral");
        return nullptr;
    }
    logLaunching(commandLine);
    const HWND window = launch.findByHiddenClass();
    logLine({"Dral Launched in User context. Dral HWND = ", toString(window)});
    return window;
}

HWND launchForLocalPort(const DralLaunch& launch, const NameBuffer& commandLine) {
    logLaunching(commandLine);
    if (!winExec(commandLine.text(), SW_SHOW)) {
        return nullptr;
    }
    const HWND window = launch.findByHiddenClass();
    logLine({"WinExec rc = 0", ". Dral HWND = ", toString(window)});
    return window;
}

HWND startByMessages(const DralLaunch& launch) {
    logLine("Using Messages in StartDRALXP");
    const PrinterHold printer(launch.friendlyName);
    if (!printer.isOpen()) {
        return nullptr;
    }
    launch.record->dralMode = VOK_MODE_WINDOW;
    const HWND running = launch.findByTitle();
    if (running != nullptr) {
        return running;
    }
    NameBuffer directory;
    if (GetPrinterDriverDir(directory.data(), NameBuffer::size) == 0) {
        return nullptr;
    }
    logLine({"dral PATH - ", launch.fileName().text()});
    const NameBuffer commandLine = launch.commandLine(directory);
    const std::string localPort = StripComputerName(launch.portName);
    return IsUncPath(localPort) ? launchForNetworkPort(launch, localPort, commandLine)
                                : launchForLocalPort(launch, commandLine);
}

}  // namespace

HANDLE StartDRALXP(const char* friendlyName, const char* portName, VKDATA* record) {
    traceCallQuietly("StartDRALXP");
    const DralLaunch launch = {friendlyName, portName, record, hiddenWindowName(*record),
                               modelPrefix()};
    if (spoolerIsApart()) {
        return startByPipe(launch);
    }
    return startByMessages(launch);
}

}  // namespace vok
