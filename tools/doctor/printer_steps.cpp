// The printers and their data.

#include <vok/companion.h>
#include <winspool.h>

#include <string>
#include <vector>

#include "common/system_text.h"
#include "examination.h"
#include "launch/port_name.h"
#include "launch/printer_lookup.h"
#include "program_file.h"
#include "support/module.h"

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

Printer checkState(Examination& examination, const std::string& name, const PrinterState& state) {
    const std::string text =
        name + ", print processor " + state.processor + ", " + std::to_string(state.jobs) + " jobs";
    if ((state.status & PRINTER_STATUS_PAUSED) != 0) {
        examination.report.problem(step, Trouble::PrinterPaused, text + ", paused");
    } else {
        examination.report.ok(step, text);
    }
    const std::string local = StripComputerName(state.port.c_str());
    const bool network = IsUncPath(local);
    examination.report.ok(
        "port",
        name + ": " + state.port + (network ? ", a network port as " + local : ", a local port"));
    return {name, state.port, network, state.jobs};
}

// False when the printer is another model's, whose library has its own printers to serve.
bool checkPrefix(Examination& examination, const std::string& name, const std::string& prefix) {
    constexpr const char* prefixStep = "printer data";
    if (prefix.empty()) {
        examination.report.problem(prefixStep, Trouble::PrefixMissing,
                                   name + " has no '" VOK_PRINTER_PREFIX_VALUE "'");
        return true;
    }
    const std::string text = name + ": '" VOK_PRINTER_PREFIX_VALUE "' is '" + prefix + "'";
    if (examination.prefix.empty() || tools::sameName(prefix, examination.prefix)) {
        examination.report.ok(prefixStep, text);
        return true;
    }
    std::string folder;
    Module::GetPrinterPath(folder);
    const std::string other = folder + prefix + "vok.dll";
    if (examination.options.printer.empty() && fileExists(other)) {
        examination.report.note(prefixStep, Trouble::LibrarySeveral,
                                text + ", the model of " + other);
        return false;
    }
    examination.report.problem(prefixStep, Trouble::PrefixWrong,
                               text + ", the model is '" + examination.prefix + "'");
    return true;
}

bool canBeOpened(Examination& examination, const std::string& name) {
    const PrinterHold printer(name.c_str());
    if (!printer.isOpen()) {
        const DWORD error = GetLastError();
        examination.report.problem(step, Trouble::PrinterMissing,
                                   name + " can't be opened: " + tools::errorText(error));
    }
    return printer.isOpen();
}

void examinePrinter(Examination& examination, const std::string& name) {
    if (!canBeOpened(examination, name)) {
        return;
    }
    const PrinterState state = stateOf(name);
    const Printer printer = checkState(examination, name, state);
    const bool ours = checkPrefix(examination, name, prefixOf(name));
    if (ours) {
        examination.printers.push_back(printer);
        examineProcessor(examination, printer, state.processor);
    }
    examineQueue(examination, printer);
}

}  // namespace

void examinePrinters(Examination& examination) {
    std::vector<std::string> names;
    if (!examination.options.printer.empty()) {
        names.push_back(examination.options.printer);
    } else {
        names = localPrinters();
        std::erase_if(names, [](const std::string& name) {
            return prefixOf(name).empty() && !callsTheLibrary(stateOf(name).processor);
        });
    }
    if (names.empty()) {
        examination.report.problem(step, Trouble::PrinterUnnamed,
                                   "no printer here has the data '" VOK_PRINTER_PREFIX_VALUE
                                   "' or a print processor that calls the library, and none was "
                                   "named");
    }
    for (const std::string& name : names) {
        examinePrinter(examination, name);
    }
}

}  // namespace vok::doctor
