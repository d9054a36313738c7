// The printer, its data, and the files that the spooler keeps for its driver.

#include <vok/companion.h>
#include <winspool.h>

#include <string>
#include <vector>

#include "common/system_text.h"
#include "examination.h"
#include "launch/port_name.h"
#include "launch/printer_lookup.h"

namespace vok::doctor {

namespace {

constexpr const char* step = "printer";

// The prefix that the printer's data names; empty when it has none.
std::string prefixOf(const std::string& printer) {
    NameBuffer className;
    std::string title;
    if (GetNembWindowNames(printer.c_str(), &className, &title) == 0) {
        return {};
    }
    const std::string text = className.text();
    return text.substr(0, text.size() - (sizeof(VOK_NEMB_TITLE) - 1));
}

std::vector<std::string> localPrinters() {
    constexpr DWORD flags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
    constexpr DWORD level = 4;
    DWORD needed = 0;
    DWORD count = 0;
    EnumPrintersA(flags, nullptr, level, nullptr, 0, &needed, &count);
    std::vector<BYTE> buffer(needed);
    std::vector<std::string> names;
    if (needed == 0 ||
        EnumPrintersA(flags, nullptr, level, buffer.data(), needed, &needed, &count) == 0) {
        return names;
    }
    const auto* printers = reinterpret_cast<const PRINTER_INFO_4A*>(buffer.data());
    for (DWORD index = 0; index < count; ++index) {
        names.emplace_back(printers[index].pPrinterName);
    }
    return names;
}

// The printer that is named, else the one of this model; empty when no printer has such data.
std::string choosePrinter(const Examination& examination) {
    if (!examination.options.printer.empty()) {
        return examination.options.printer;
    }
    std::string chosen;
    for (const std::string& name : localPrinters()) {
        const std::string prefix = prefixOf(name);
        if (!prefix.empty() && tools::sameName(prefix, examination.prefix)) {
            return name;
        }
        if (!prefix.empty() && chosen.empty()) {
            chosen = name;
        }
    }
    return chosen;
}

// What the spooler tells of a printer; all empty when it tells nothing.
struct PrinterState {
    std::string port;
    std::string processor;
    DWORD status = 0;
    DWORD jobs = 0;
};

PrinterState stateOf(const std::string& printer) {
    std::string name = printer;
    HANDLE handle = nullptr;
    if (OpenPrinterA(name.data(), &handle, nullptr) == 0) {
        return {};
    }
    constexpr DWORD level = 2;
    DWORD needed = 0;
    GetPrinterA(handle, level, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed);
    PrinterState state;
    if (needed != 0 && GetPrinterA(handle, level, buffer.data(), needed, &needed) != 0) {
        const auto* info = reinterpret_cast<const PRINTER_INFO_2A*>(buffer.data());
        state = {info->pPortName == nullptr ? "" : info->pPortName,
                 info->pPrintProcessor == nullptr ? "" : info->pPrintProcessor, info->Status,
                 info->cJobs};
    }
    ClosePrinter(handle);
    return state;
}

void checkState(Examination& examination) {
    const PrinterState state = stateOf(examination.printer);
    examination.port = state.port;
    examination.jobs = state.jobs;
    const std::string text = examination.printer + ", print processor " + state.processor + ", " +
                             std::to_string(state.jobs) + " jobs";
    if ((state.status & PRINTER_STATUS_PAUSED) != 0) {
        examination.report.problem(step, Trouble::PrinterPaused, text + ", paused");
    } else {
        examination.report.ok(step, text);
    }
    const std::string local = StripComputerName(state.port.c_str());
    examination.networkPort = IsUncPath(local);
    examination.report.ok(
        "port",
        state.port + (examination.networkPort ? ", a network port as " + local : ", a local port"));
}

void checkPrefix(Examination& examination) {
    constexpr const char* prefixStep = "printer data";
    const std::string prefix = prefixOf(examination.printer);
    if (prefix.empty()) {
        examination.report.problem(prefixStep, Trouble::PrefixMissing,
                                   examination.printer + " has no '" VOK_PRINTER_PREFIX_VALUE "'");
        return;
    }
    const std::string text = "'" VOK_PRINTER_PREFIX_VALUE "' is '" + prefix + "'";
    if (!examination.prefix.empty() && !tools::sameName(prefix, examination.prefix)) {
        examination.report.problem(prefixStep, Trouble::PrefixWrong,
                                   text + ", the model is '" + examination.prefix + "'");
        return;
    }
    examination.report.ok(prefixStep, text);
}

void checkCompanionFile(Examination& examination, const char* fileName) {
    const std::string path = examination.companionPath(fileName);
    const std::string fileStep = examination.prefix + fileName;
    if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        examination.report.problem(fileStep, Trouble::CompanionMissing,
                                   path + ": " + tools::errorText(error));
        return;
    }
    DWORD type = 0;
    if (GetBinaryTypeA(path.c_str(), &type) == 0) {
        examination.report.problem(fileStep, Trouble::CompanionNotProgram, path);
        return;
    }
    examination.report.ok(fileStep, path);
}

}  // namespace

void examinePrinter(Examination& examination) {
    const std::string name = choosePrinter(examination);
    if (name.empty()) {
        examination.report.problem(step, Trouble::PrinterUnnamed,
                                   "no printer here has the data '" VOK_PRINTER_PREFIX_VALUE
                                   "', and none was named");
        return;
    }
    DWORD error = ERROR_SUCCESS;
    {
        const PrinterHold printer(name.c_str());
        if (!printer.isOpen()) {
            error = GetLastError();
            examination.report.problem(step, Trouble::PrinterMissing,
                                       name + " can't be opened: " + tools::errorText(error));
            return;
        }
    }
    examination.printer = name;
    checkState(examination);
    checkPrefix(examination);
}

void examineFiles(Examination& examination) {
    const std::string folder = tools::folderOf(examination.companionPath(""));
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        examination.report.problem("driver folder", Trouble::DriverFolder, folder);
        return;
    }
    if (folder.find(' ') != std::string::npos) {
        examination.report.warn("driver folder", Trouble::BlankInPath, folder);
    } else {
        examination.report.ok("driver folder", folder);
    }
    if (!examination.prefix.empty()) {
        checkCompanionFile(examination, VOK_DRAL_EXE);
        checkCompanionFile(examination, VOK_NEMB_EXE);
    }
}

}  // namespace vok::doctor
