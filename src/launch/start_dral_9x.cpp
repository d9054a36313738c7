#include <vok/companion.h>

#include "launch/companion_search.h"
#include "launch/hidden_window.h"
#include "launch/printer_lookup.h"
#include "launch/program_launch.h"
#include "launch/start_dral.h"
#include "launch/system_directory.h"
#include "logging/log_line.h"
#include "support/text.h"

namespace vok {

namespace {

HWND launchAndFind(const char* friendlyName, VKDATA* record, const NameBuffer& hiddenWindow) {
    NameBuffer fileName = modelPrefix();
    // In small letters on 9x, as the line in the log has always had it.
    fileName << "dral.exe";
    const NameBuffer application = pathInSystemDirectory(fileName.text());
    NameBuffer commandLine(VOK_ARG_PRINTER);
    commandLine << friendlyName;
    if (LaunchXFile(record, application.text(), commandLine.text(), companionDral) != 0) {
        return nullptr;
    }
    return FindXWindow(hiddenWindow.text(), nullptr);
}

}  // namespace

HANDLE StartDRAL9X(const char* friendlyName, VKDATA* record) {
    const PrinterHold printer(friendlyName);
    if (!printer.isOpen()) {
        return nullptr;
    }
    // Unlike the file name the title has no model prefix.
    NameBuffer title(VOK_DRAL_TITLE);
    title << friendlyName;
    logLine({"Searching Dral Title = ", title.text()});
    const NameBuffer hiddenWindow = hiddenWindowName(*record);
    const HWND window = FindWindowA(hiddenWindow.text(), title.text());
    logLine({"hDRAL = ", toString(window)});
    return window != nullptr ? window : launchAndFind(friendlyName, record, hiddenWindow);
}

}  // namespace vok
