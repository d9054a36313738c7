// The printers, their data and their queues.

#include <fmt/format.h>
#include <vok/companion.h>
#include <winspool.h>

#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/system.h"
#include "examination.h"
#include "launch/printer_lookup.h"

namespace vok::doctor {

namespace {

constexpr std::int64_t longMinutes = 10;

using OpenedPrinter =
    std::unique_ptr<void, decltype([](HANDLE printer) { ClosePrinter(printer); })>;

// Null, with the last error, when it can't be opened.
OpenedPrinter openPrinter(const std::string& name) {
    HANDLE printer = nullptr;
    OpenPrinterA(const_cast<char*>(name.c_str()), &printer, nullptr);
    return OpenedPrinter(printer);
}

// What the spooler says to a question that is put for the size of the answer first. Nothing, with
// the last error, when it does not answer.
template <typename Question>
std::optional<std::vector<BYTE>> answerTo(const Question& question) {
    DWORD needed = 0;
    BOOL answered = question(nullptr, 0, &needed);
    std::vector<BYTE> answer(needed);
    if (answered == 0 && needed != 0) {
        answered = question(answer.data(), needed, &needed);
    }
    return answered != 0 ? std::optional(std::move(answer)) : std::nullopt;
}

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
    DWORD count = 0;
    const auto answer = answerTo([&count](BYTE* data, DWORD size, DWORD* needed) {
        return EnumPrintersA(flags, nullptr, 4, data, size, needed, &count);
    });
    std::vector<std::string> names;
    for (DWORD index = 0; answer && index < count; ++index) {
        names.emplace_back(
            reinterpret_cast<const PRINTER_INFO_4A*>(answer->data())[index].pPrinterName);
    }
    return names;
}

const char* orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

// Name and files of the driver; no files, and the error, when the spooler doesn't tell.
Driver driverOf(HANDLE printer) {
    const auto answer = answerTo([printer](BYTE* data, DWORD size, DWORD* needed) {
        return GetPrinterDriverA(printer, nullptr, 3, data, size, needed);
    });
    Driver driver = {{}, {}, GetLastError()};
    if (!answer) {
        return driver;
    }
    const auto* info = reinterpret_cast<const DRIVER_INFO_3A*>(answer->data());
    driver.name = info->pName;
    for (const char* file : {info->pDriverPath, info->pConfigFile, info->pDataFile}) {
        driver.files.insert(orEmpty(file));
    }
    for (const char* file = info->pDependentFiles; file != nullptr && *file != '\0';
         file += std::string(file).size() + 1) {
        driver.files.insert(file);
    }
    driver.files.erase("");
    return driver;
}

Printer readPrinter(const std::string& name, HANDLE handle) {
    Printer printer = {name, {}, {}, 0, 0, {}};
    const auto answer = answerTo([handle](BYTE* data, DWORD size, DWORD* needed) {
        return GetPrinterA(handle, 2, data, size, needed);
    });
    if (answer) {
        const auto* info = reinterpret_cast<const PRINTER_INFO_2A*>(answer->data());
        printer.port = orEmpty(info->pPortName);
        printer.processor = orEmpty(info->pPrintProcessor);
        printer.status = info->Status;
        printer.jobs = info->cJobs;
    }
    return printer;
}

void checkState(Examination& examination, const Printer& printer) {
    const Step step = examination.step("printer");
    const std::string text = fmt::format("{}, print processor {}, {} jobs", printer.name,
                                         printer.processor, printer.jobs);
    if ((printer.status & PRINTER_STATUS_PAUSED) != 0) {
        step.problem("printer-paused", "{}, paused", text);
    } else {
        step.ok("{}", text);
    }
    examination.step("port").ok(
        "{}: {}, {}", printer.name, printer.port,
        printer.hasNetworkPort() ? "a network port as " + printer.localPort() : "a local port");
}

// False when the printer is another model's, whose library has its own printers to serve.
bool checkPrefix(Examination& examination, const std::string& name, const std::string& prefix) {
    const Step step = examination.step("printer data");
    const std::string text = name + ": '" VOK_PRINTER_PREFIX_VALUE "' is '" + prefix + "'";
    const std::string other = driverFolder() + prefix + "vok.dll";
    if (prefix.empty()) {
        step.problem("prefix-missing", "{} has no '{}'", name, VOK_PRINTER_PREFIX_VALUE);
    } else if (examination.prefix.empty() || tools::sameName(prefix, examination.prefix)) {
        step.ok("{}", text);
    } else if (examination.options.printer.empty() && tools::fileExists(other)) {
        step.note("library-several", "{}, the model of {}", text, other);
        return false;
    } else {
        step.problem("prefix-wrong", "{}, the model is '{}'", text, examination.prefix);
    }
    return true;
}

std::int64_t minutesSince(const SYSTEMTIME& then) {
    constexpr std::int64_t ticksAMinute = 600000000;
    FILETIME began = {};
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const bool known = SystemTimeToFileTime(&then, &began) != 0;
    const auto passed = std::bit_cast<std::int64_t>(now) - std::bit_cast<std::int64_t>(began);
    return known && passed > 0 ? passed / ticksAMinute : 0;
}

void examineJob(const Step& step, const Printer& printer, const JOB_INFO_1A& job) {
    // What keeps it in the queue by the spooler's own word.
    const std::string held = bitNames(
        job.Status, {{JOB_STATUS_PAUSED, "paused"},
                     {JOB_STATUS_ERROR, "in error"},
                     {JOB_STATUS_OFFLINE, "the printer is offline"},
                     {JOB_STATUS_PAPEROUT, "out of paper"},
                     {JOB_STATUS_BLOCKED_DEVQ, "the driver can't print it"},
                     {JOB_STATUS_USER_INTERVENTION, "somebody has to see to the printer"}});
    const std::int64_t minutes = minutesSince(job.Submitted);
    const std::string text =
        fmt::format("{}: job {}, in the queue for {} min", printer.name, job.JobId, minutes);
    if (!held.empty()) {
        step.problem("job-stuck", "{}: {}", text, held);
    } else if (minutes >= longMinutes) {
        step.warn("job-stuck", "{}", text);
    } else {
        step.ok("{}", text);
    }
}

void examineQueue(Examination& examination, const Printer& printer, HANDLE handle) {
    const Step step = examination.step("queue");
    DWORD count = 0;
    const auto answer = answerTo([&](BYTE* data, DWORD size, DWORD* needed) {
        return EnumJobsA(handle, 0, printer.jobs, 1, data, size, needed, &count);
    });
    if (!answer) {
        step.warn("job-stuck", "{}: {} jobs, which the spooler does not list: {}", printer.name,
                  printer.jobs, tools::errorText(GetLastError()));
        return;
    }
    for (DWORD index = 0; index < count; ++index) {
        examineJob(step, printer, reinterpret_cast<const JOB_INFO_1A*>(answer->data())[index]);
    }
}

void examinePrinter(Examination& examination, const std::string& name) {
    const OpenedPrinter opened = openPrinter(name);
    if (opened == nullptr) {
        examination.step("printer").problem("printer-missing", "{} can't be opened: {}", name,
                                            tools::errorText(GetLastError()));
        return;
    }
    Printer printer = readPrinter(name, opened.get());
    printer.driver = driverOf(opened.get());
    checkState(examination, printer);
    if (checkPrefix(examination, name, prefixOf(name))) {
        examination.printers.push_back(printer);
        examineProcessor(examination, printer);
    }
    if (printer.jobs != 0) {
        examineQueue(examination, printer, opened.get());
    }
}

}  // namespace

void examinePrinters(Examination& examination) {
    std::vector<std::string> names = {examination.options.printer};
    if (examination.options.printer.empty()) {
        names = localPrinters();
        std::erase_if(names, [](const std::string& name) {
            return prefixOf(name).empty() &&
                   !callsTheLibrary(readPrinter(name, openPrinter(name).get()).processor);
        });
    }
    if (names.empty()) {
        examination.step("printer").problem(
            "printer-unnamed",
            "no printer here has the data '{}' or a print processor that calls the library, and "
            "none was named",
            VOK_PRINTER_PREFIX_VALUE);
    }
    for (const std::string& name : names) {
        examinePrinter(examination, name);
    }
}

}  // namespace vok::doctor
