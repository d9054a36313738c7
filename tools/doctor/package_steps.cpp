// The files of the driver: all there, whole, and of one version. Among them is the print processor:
// whoever does not call the library has no companion asked.

#include <vok/companion.h>
#include <vok/config_library.h>
#include <vok/vok.h>
#include <winspool.h>

#include <array>
#include <set>
#include <string>

#include "common/system.h"
#include "examination.h"
#include "program_file.h"

namespace vok::doctor {

namespace {

// False, with the finding made, when the file ends too early.
bool isWhole(const Step& step, const std::string& path) {
    const std::string cut = whatIsCut(path);
    if (!cut.empty()) {
        step.problem("file-cut", "{} {}", path, cut);
    }
    return cut.empty();
}

void checkCompanionFile(Examination& examination, const char* fileName) {
    const Step step = examination.step(examination.prefix + fileName);
    const std::string path = examination.companionPath(fileName);
    DWORD type = 0;
    if (!tools::fileExists(path)) {
        step.problem("companion-missing", "{}: {}", path, tools::errorText(GetLastError()));
    } else if (!isWhole(step, path)) {
        return;
    } else if (GetBinaryTypeA(path.c_str(), &type) == 0) {
        step.problem("companion-not-program", "{}", path);
    } else {
        step.ok("{}", path);
    }
}

// Files of one package bear one version; one without a version says nothing.
void compareVersions(Examination& examination) {
    const Step step = examination.step("package");
    std::set<std::string> versions;
    std::string text;
    for (const std::string& path :
         {examination.libraryPath, examination.companionPath(VOK_CONFIG_LIBRARY_FILE),
          examination.companionPath(VOK_DRAL_EXE), examination.companionPath(VOK_NEMB_EXE)}) {
        if (!tools::fileExists(path)) {
            continue;
        }
        const std::string version = versionOf(path);
        text += (text.empty() ? "" : ", ") + tools::fileOf(path) + " " +
                (version.empty() ? "without a version" : version);
        if (!version.empty()) {
            versions.insert(version);
        }
    }
    if (versions.size() > 1) {
        step.warn("package-versions", "{}", text);
    } else if (!text.empty()) {
        step.ok("{}", text);
    }
}

// The files that the spooler loads for the driver itself.
void checkDriver(const Step& step, const Printer& printer) {
    const Driver& driver = printer.driver;
    if (driver.files.empty()) {
        step.problem("driver-files", "{}: its driver is not told, {}", printer.name,
                     tools::errorText(driver.error));
        return;
    }
    bool whole = true;
    for (const std::string& file : driver.files) {
        if (!tools::fileExists(file)) {
            step.problem("driver-files", "{}: {} is not there", printer.name, file);
            whole = false;
        } else {
            whole = isWhole(step, file) && whole;
        }
    }
    if (whole) {
        step.ok("{}: {}, {} files", printer.name, driver.name, driver.files.size());
    }
}

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

std::string processorPath(const std::string& fileName) {
    std::array<char, MAX_PATH> folder{};
    DWORD needed = 0;
    GetPrintProcessorDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(folder.data()),
                                static_cast<DWORD>(folder.size()), &needed);
    return std::string(folder.data()) + "\\" + fileName;
}

}  // namespace

bool callsTheLibrary(const std::string& processor) {
    const std::string file = registeredFile(processor);
    return !file.empty() && holdsText(processorPath(file), VOK_EXPORT_LAUNCH_XFILES);
}

void examineProcessor(Examination& examination, const Printer& printer) {
    if (examination.family == family9x) {
        return;
    }
    const Step step = examination.step("print processor");
    const std::string text = printer.name + ": " + printer.processor;
    const std::string file = registeredFile(printer.processor);
    const std::string path = processorPath(file);
    if (file.empty()) {
        step.problem("processor-missing", "{} is not registered", text);
    } else if (!tools::fileExists(path)) {
        step.problem("processor-missing", "{}, {}: {}", text, path,
                     tools::errorText(GetLastError()));
    } else if (const std::string cut = whatIsCut(path); !cut.empty()) {
        step.problem("file-cut", "{}, {} {}", text, path, cut);
    } else if (tools::sameName(printer.processor, "winprint")) {
        step.problem("processor-of-system", "{} is the system's own and never calls the library",
                     text);
    } else if (!holdsText(path, VOK_EXPORT_LAUNCH_XFILES)) {
        step.warn("processor-foreign",
                  "{}, {}: {}, by which the library is called, is not seen in it", text, path,
                  VOK_EXPORT_LAUNCH_XFILES);
    } else {
        step.ok("{}, {}", text, path);
    }
}

void examinePackage(Examination& examination) {
    const Step step = examination.step("driver folder");
    const std::string folder = tools::folderOf(examination.companionPath(""));
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        step.problem("driver-folder", "{}", folder);
        return;
    }
    if (folder.find(' ') != std::string::npos) {
        step.warn("blank-in-path", "{}", folder);
    } else {
        step.ok("{}", folder);
    }
    if (!examination.prefix.empty()) {
        checkCompanionFile(examination, VOK_DRAL_EXE);
        checkCompanionFile(examination, VOK_NEMB_EXE);
        compareVersions(examination);
    }
    if (examination.family != family9x) {
        for (const Printer& printer : examination.printers) {
            checkDriver(examination.step("driver"), printer);
        }
    }
}

}  // namespace vok::doctor
