// The start of both companions.
#include <string>

#include "faults/model.h"

namespace vok::test {
namespace {

constexpr const char* printerArgument = "\"Office\"";
constexpr const char* dralTitle = "DRAL - Office\"";
constexpr const char* nembTitle = "NEMB - Office\"";
constexpr const char* hiddenClass = "\"DRAL Hidden Window-Suffix\", null";
constexpr LONG_PTR lastStartError = 31;

}  // namespace

LONG Model::launch() {
    record_.hDRAL = family() == Family::of9x ? start9x(true) : startDral();
    if (record_.hDRAL || record_.dralMode == VOK_MODE_WINDOW) {
        record_.hNEMB = family() == Family::of9x ? start9x(false) : startNemb();
    }
    return record_.hDRAL && record_.hNEMB ? TRUE : FALSE;
}

// Where an id cannot be had it counts as 0.
bool Model::isApart() {
    if (family() != Family::withSessions) {
        return false;
    }
    const bool terminalServices = load("wtsapi32.dll");
    const bool kernel = load("kernel32.dll");
    if (terminalServices) {
        lookUp("WTSQueryUserToken");
    }
    LONG_PTR console = 0;
    if (kernel && lookUp("WTSGetActiveConsoleSessionId")) {
        console = numberIn(trace_.take("WTSGetActiveConsoleSessionId"));
    }
    LONG_PTR own = 0;
    if (kernel && lookUp("ProcessIdToSessionId")) {
        own = numberIn(noteIn(trace_.take("ProcessIdToSessionId")));
    }
    return console != own;
}

HANDLE Model::closePrinter(HANDLE result) {
    trace_.take("ClosePrinter");
    return result;
}

// A directory that cannot be had is empty.
void Model::driverDirectory() {
    trace_.take("GetPrinterDriverDirectoryA");
    family();
}

HANDLE Model::makePipe(const char* name) {
    return handleIn(trace_.take("CreateNamedPipeA", name));
}

HANDLE Model::startDral() {
    return isApart() ? startDralByPipe() : startDralByMessages();
}

HANDLE Model::startDralByPipe() {
    if (!succeeded(trace_.take("OpenPrinterA", printerArgument))) {
        return nullptr;
    }
    record_.dralMode = VOK_MODE_PIPE;
    if (!succeeded(trace_.take("FindWindowA", dralTitle))) {
        driverDirectory();
        if (!launchProgram(true)) {
            return closePrinter(nullptr);
        }
    }
    return closePrinter(makePipe(R"("\\.\pipe\DRALOffice", 3, 0, 2, 1024, 1024, 1000, sa{24)"));
}

HANDLE Model::startDralByMessages() {
    if (!succeeded(trace_.take("OpenPrinterA", printerArgument))) {
        return nullptr;
    }
    record_.dralMode = VOK_MODE_WINDOW;
    if (const HANDLE running = handleIn(trace_.take("FindWindowA", dralTitle))) {
        return closePrinter(running);
    }
    driverDirectory();
    const bool started =
        localPort().starts_with("\\\\")
            ? launchProgram(true) != nullptr
            : numberIn(trace_.take("WinExec", "DRAL.EXE SPLPP /F=Office\", 5")) > lastStartError;
    return closePrinter(started ? handleIn(trace_.take("FindWindowA", hiddenClass)) : nullptr);
}

HANDLE Model::startNemb() {
    return isApart() ? startNembByPipe() : startNembByMessages();
}

HANDLE Model::startNembByPipe() {
    if (!succeeded(trace_.take("OpenPrinterA", printerArgument))) {
        return nullptr;
    }
    record_.nembMode = VOK_MODE_PIPE;
    if (!succeeded(trace_.take("FindWindowA", nembTitle)) &&
        !succeeded(trace_.take("OpenMutexA", "NEMB - OFFICE\""))) {
        driverDirectory();
        if (!launchProgram(false)) {
            return closePrinter(nullptr);
        }
    }
    return closePrinter(makePipe(R"("\\.\pipe\NEMBOffice", 3, 0, 2, 1024, 1024, 1000, sa{24)"));
}

// Without the printer's prefix printer and key stay open.
HANDLE Model::startNembByMessages() {
    if (!succeeded(trace_.take("OpenPrinterA", printerArgument))) {
        return nullptr;
    }
    record_.nembMode = VOK_MODE_WINDOW;
    const std::string opened = trace_.take("RegOpenKeyA", "Office\\PrinterDriverData\"");
    if (opened.starts_with("0") && !trace_.take("RegQueryValueExA").starts_with("0")) {
        return nullptr;
    }
    if (const HANDLE running = handleIn(trace_.take("FindWindowA", nembTitle))) {
        return closePrinter(running);
    }
    driverDirectory();
    const std::string started = trace_.take("WinExec", "nemb.exe SPLPP /F=Office /J=1\", 5");
    if (numberIn(started) <= lastStartError) {
        return closePrinter(nullptr);
    }
    return closePrinter(handleIn(trace_.take("FindWindowA", nembTitle)));
}

HANDLE Model::start9x(bool dral) {
    constexpr int attempts = 200;
    if (!succeeded(trace_.take("OpenPrinterA", printerArgument))) {
        return nullptr;
    }
    HANDLE window = handleIn(trace_.take("FindWindowA", dral ? dralTitle : nembTitle));
    if (window) {
        return closePrinter(window);
    }
    const std::string created =
        trace_.take("CreateProcessA", dral ? "\" SPLPP /F=Office\"" : "\" SPLPP /F=Office /J=1\"");
    if (!succeeded(created)) {
        return closePrinter(nullptr);
    }
    store(dral, created);
    for (int i = 0; i < attempts && !window; ++i) {
        window = handleIn(trace_.take("FindWindowA", dral ? hiddenClass : nembTitle));
        if (!window) {
            trace_.take("Sleep", "10");
        }
    }
    return closePrinter(window);
}

}  // namespace vok::test
