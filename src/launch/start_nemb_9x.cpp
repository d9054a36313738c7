#include <vok/companion.h>

#include "launch/companion_search.h"
#include "launch/nemb_names.h"
#include "launch/printer_lookup.h"
#include "launch/program_launch.h"
#include "launch/start_nemb.h"
#include "launch/system_directory.h"
#include "logging/function_trace.h"
#include "logging/log_line.h"
#include "support/text.h"

namespace vok {

namespace {

HWND launchAndFind(const char* friendlyName, VKDATA* record, const NameBuffer& prefix) {
    NameBuffer fileName = prefix;
    // In small letters on 9x, as the line in the log has always had it.
    fileName << "nemb.exe";
    const NameBuffer application = pathInSystemDirectory(fileName.text());
    NameBuffer commandLine;
    appendNembArguments(commandLine, friendlyName);
    if (LaunchXFile(record, application.text(), commandLine.text(), companionNemb) != 0) {
        return nullptr;
    }
    logLaunchingNemb(commandLine);
    return FindXWindow(nembClass(prefix).text(), nembTitle(prefix, friendlyName).text());
}

}  // namespace

HANDLE StartNEMB9X(const char* friendlyName, VKDATA* record) {
    traceCallQuietly("StartNEMB9X");
    const PrinterHold printer(friendlyName);
    if (!printer.isOpen()) {
        return nullptr;
    }
    const NameBuffer prefix = modelPrefix();
    const HWND window =
        FindWindowA(nembClass(prefix).text(), nembTitle(prefix, friendlyName).text());
    logLine({"hNEMB =  ", toString(window)});
    return window != nullptr ? window : launchAndFind(friendlyName, record, prefix);
}

}  // namespace vok
