// The print processor: whoever does not call the library has no companion asked.

#include <vok/vok.h>
#include <winspool.h>

#include <array>
#include <string>

#include "common/system_text.h"
#include "examination.h"
#include "program_file.h"

namespace vok::doctor {

namespace {

constexpr const char* step = "print processor";

// The file name that the processor was registered with; empty when it is not.
std::string registeredFile(const std::string& processor) {
    const std::string key = R"(SYSTEM\CurrentControlSet\Control\Print\Environments\Windows x64)"
                            R"(\Print Processors\)" +
                            processor;
    std::array<char, MAX_PATH> name{};
    DWORD size = static_cast<DWORD>(name.size());
    if (RegGetValueA(HKEY_LOCAL_MACHINE, key.c_str(), "Driver", RRF_RT_REG_SZ, nullptr, name.data(),
                     &size) != ERROR_SUCCESS) {
        return {};
    }
    return name.data();
}

std::string pathOf(const std::string& fileName) {
    std::array<char, MAX_PATH> folder{};
    DWORD needed = 0;
    GetPrintProcessorDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(folder.data()),
                                static_cast<DWORD>(folder.size()), &needed);
    return std::string(folder.data()) + "\\" + fileName;
}

// The library has no other way to be called than by the names of its functions.
bool namesTheLibrary(const std::string& path) {
    return holdsText(path, VOK_EXPORT_LAUNCH_XFILES);
}

}  // namespace

bool callsTheLibrary(const std::string& processor) {
    const std::string file = registeredFile(processor);
    return !file.empty() && namesTheLibrary(pathOf(file));
}

void examineProcessor(Examination& examination, const Printer& printer,
                      const std::string& processor) {
    if (examination.family == family9x) {
        return;
    }
    const std::string text = printer.name + ": " + processor;
    const std::string file = registeredFile(processor);
    if (file.empty()) {
        examination.report.problem(step, Trouble::ProcessorMissing, text + " is not registered");
        return;
    }
    const std::string path = pathOf(file);
    if (!fileExists(path)) {
        const DWORD error = GetLastError();
        examination.report.problem(step, Trouble::ProcessorMissing,
                                   text + ", " + path + ": " + tools::errorText(error));
        return;
    }
    const std::string cut = whatIsCut(path);
    if (!cut.empty()) {
        examination.report.problem(step, Trouble::FileCut, text + ", " + path + " " + cut);
    } else if (tools::sameName(processor, "winprint")) {
        examination.report.problem(step, Trouble::ProcessorOfSystem,
                                   text + " is the system's own and never calls the library");
    } else if (!namesTheLibrary(path)) {
        examination.report.warn(step, Trouble::ProcessorForeign,
                                text + ", " + path +
                                    ": " VOK_EXPORT_LAUNCH_XFILES
                                    ", by which the library is called, is not seen in it");
    } else {
        examination.report.ok(step, text + ", " + path);
    }
}

}  // namespace vok::doctor
