#include "setup.h"

#include <vok/companion.h>

#include <cstdio>
#include <optional>
#include <string>

#include "common/machine.h"
#include "common/options.h"
#include "common/settings.h"
#include "files.h"
#include "spooler.h"

namespace vok::sample {
namespace {

HWND companionWindow(const char* name, const std::string& printer) {
    return FindWindowA(nullptr, (VOK_MODEL_PREFIX + std::string(name) + printer).c_str());
}

/// Asks a running companion to end, and waits until it has.
bool endCompanion(const char* name, const std::string& printer) {
    constexpr DWORD longest_wait = 5000;
    const HWND window = companionWindow(name, printer);
    if (window == nullptr)
        return true;
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
    PostMessageA(window, WM_CLOSE, 0, 0);
    if (process == nullptr)
        return true;
    const bool ended = WaitForSingleObject(process, longest_wait) == WAIT_OBJECT_0;
    CloseHandle(process);
    if (!ended)
        complain("process " + std::to_string(id) + " of '" + name + printer + "' does not end");
    return ended;
}

bool installFiles(const std::string& source) {
    const std::string target = companionDirectory();
    if (target.empty()) {
        complain(withError("the spooler has no driver directory", GetLastError()));
        return false;
    }
    makeFolder(target);
    for (const std::string& file : modelFiles()) {
        if (!copyFile(file, source, target))
            return false;
    }
    return true;
}

bool makeBaseKey() {
    // Both keys and a first value: the library wants the base key to be there already.
    const long status = writeSetting("", trace_file_value, readSetting("", trace_file_value));
    if (status != ERROR_SUCCESS)
        complain(withError("can't make the registry key " + baseKey(), static_cast<DWORD>(status)));
    else
        std::printf("registry key    HKEY_LOCAL_MACHINE\\%s\n", baseKey().c_str());
    return status == ERROR_SUCCESS;
}

/// The model's own key goes too, unless somebody else has something in it.
bool removeBaseKey() {
    const LSTATUS status = RegDeleteTreeA(HKEY_LOCAL_MACHINE, baseKey().c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
        complain(
            withError("can't delete the registry key " + baseKey(), static_cast<DWORD>(status)));
        return false;
    }
    const std::string model = base_key_head + std::string(VOK_MODEL_PREFIX);
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, model.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return true;
    DWORD keys = 0;
    DWORD values = 0;
    const LSTATUS asked = RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                           &values, nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(key);
    if (asked == ERROR_SUCCESS && keys == 0 && values == 0)
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, model.c_str());
    return true;
}

bool removeFromSpooler(const Setup& setup) {
    // Asked before the printer is gone: it may have been installed on another one than the default.
    const std::string port = portOfPrinter(setup.printer).value_or(setup.port);
    bool done = deletePrinter(setup.printer);
    done = deletePort(port) && done;
    done = (!setup.driver.empty() || deleteDriver()) && done;
    return deletePrintProcessor() && done;
}

bool administrates() {
    if (!isAdministrator())
        complain("this needs an administrator: nothing was changed");
    return isAdministrator();
}

void show(const char* what, const std::string& name, const char* state) {
    std::printf("%-10s %-44s %s\n", what, name.c_str(), state);
}

}  // namespace

bool mayInstall(const Setup& setup) {
    return administrates() && (setup.driver.empty() || is9x() || findDriver(setup.driver));
}

bool install(const Setup& setup) {
    if (!mayInstall(setup) || !makeBaseKey() || !installFiles(setup.source))
        return false;
    if (is9x()) {
        std::printf("spooler         left alone: it can't load the print processor\n");
        return true;
    }
    return addPrintProcessor(setup.source) && (!setup.driver.empty() || addDriver(setup.source)) &&
           addPort(setup.port) && addPrinter(setup.printer, setup.port, setup.driver);
}

bool remove(const Setup& setup) {
    if (!administrates())
        return false;
    bool done = endCompanion(VOK_DRAL_TITLE, setup.printer);
    done = endCompanion(VOK_NEMB_TITLE, setup.printer) && done;
    done = (is9x() || removeFromSpooler(setup)) && done;
    for (const std::string& file : modelFiles())
        done = deleteFile(companionDirectory() + "\\" + file) && done;
    return removeBaseKey() && done;
}

bool showStatus(const Setup& setup) {
    const std::optional<std::string> port = portOfPrinter(setup.printer);
    bool whole = port.has_value();
    show("printer", setup.printer, whole ? "installed" : "missing");
    if (port)
        show("port", *port, "of the printer");
    for (const std::string& file : modelFiles()) {
        const std::string path = companionDirectory() + "\\" + file;
        const bool there = fileExists(path);
        show("file", path, there ? "installed" : "missing");
        whole = whole && there;
    }
    for (const char* name : {VOK_DRAL_TITLE, VOK_NEMB_TITLE}) {
        const bool runs = companionWindow(name, setup.printer) != nullptr;
        show("companion", VOK_MODEL_PREFIX + std::string(name) + setup.printer,
             runs ? "running" : "not running");
    }
    return whole;
}

}  // namespace vok::sample
