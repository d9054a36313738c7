// The files of the driver: all there, whole, and of one version.

#include <vok/companion.h>
#include <vok/config_library.h>
#include <winspool.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "common/system_text.h"
#include "examination.h"
#include "program_file.h"

namespace vok::doctor {

namespace {

// False, with the finding made, when the file ends too early.
bool isWhole(Examination& examination, const std::string& step, const std::string& path) {
    const std::string cut = whatIsCut(path);
    if (!cut.empty()) {
        examination.report.problem(step, Trouble::FileCut, path + " " + cut);
    }
    return cut.empty();
}

void checkCompanionFile(Examination& examination, const char* fileName) {
    const std::string path = examination.companionPath(fileName);
    const std::string step = examination.prefix + fileName;
    if (!fileExists(path)) {
        const DWORD error = GetLastError();
        examination.report.problem(step, Trouble::CompanionMissing,
                                   path + ": " + tools::errorText(error));
        return;
    }
    if (!isWhole(examination, step, path)) {
        return;
    }
    DWORD type = 0;
    if (GetBinaryTypeA(path.c_str(), &type) == 0) {
        examination.report.problem(step, Trouble::CompanionNotProgram, path);
        return;
    }
    examination.report.ok(step, path);
}

// Files of one package bear one version; one without a version says nothing.
void compareVersions(Examination& examination) {
    constexpr const char* step = "package";
    std::set<std::string> versions;
    std::string text;
    for (const std::string& path :
         {examination.libraryPath, examination.companionPath(VOK_CONFIG_LIBRARY_FILE),
          examination.companionPath(VOK_DRAL_EXE), examination.companionPath(VOK_NEMB_EXE)}) {
        if (!fileExists(path)) {
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
        examination.report.warn(step, Trouble::PackageVersions, text);
    } else if (!text.empty()) {
        examination.report.ok(step, text);
    }
}

// Name and files of the printer's driver; no files, and the error, when the spooler doesn't tell.
std::set<std::string> driverFiles(const Printer& printer, std::string& driver, DWORD& error) {
    constexpr DWORD level = 3;
    std::string name = printer.name;
    HANDLE handle = nullptr;
    DWORD needed = 0;
    OpenPrinterA(name.data(), &handle, nullptr);
    GetPrinterDriverA(handle, nullptr, level, nullptr, 0, &needed);
    std::vector<BYTE> buffer(std::max<DWORD>(needed, sizeof(DRIVER_INFO_3A)));
    std::set<std::string> files;
    if (GetPrinterDriverA(handle, nullptr, level, buffer.data(), needed, &needed) != 0) {
        const auto* info = reinterpret_cast<const DRIVER_INFO_3A*>(buffer.data());
        driver = info->pName;
        for (const char* file : {info->pDriverPath, info->pConfigFile, info->pDataFile}) {
            files.insert(file == nullptr ? "" : file);
        }
        for (const char* file = info->pDependentFiles; file != nullptr && *file != '\0';
             file += std::string(file).size() + 1) {
            files.insert(file);
        }
        files.erase("");
    }
    error = GetLastError();
    ClosePrinter(handle);
    return files;
}

// The files that the spooler loads for the driver itself.
void checkDriver(Examination& examination, const Printer& printer) {
    constexpr const char* step = "driver";
    std::string driver;
    DWORD error = ERROR_SUCCESS;
    const std::set<std::string> files = driverFiles(printer, driver, error);
    if (files.empty()) {
        examination.report.problem(
            step, Trouble::DriverFiles,
            printer.name + ": its driver is not told, " + tools::errorText(error));
        return;
    }
    bool whole = true;
    for (const std::string& file : files) {
        if (!fileExists(file)) {
            examination.report.problem(step, Trouble::DriverFiles,
                                       printer.name + ": " + file + " is not there");
            whole = false;
        } else {
            whole = isWhole(examination, step, file) && whole;
        }
    }
    if (whole) {
        examination.report.ok(
            step, printer.name + ": " + driver + ", " + std::to_string(files.size()) + " files");
    }
}

}  // namespace

void examinePackage(Examination& examination) {
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
        compareVersions(examination);
    }
    if (examination.family != family9x) {
        for (const Printer& printer : examination.printers) {
            checkDriver(examination, printer);
        }
    }
}

}  // namespace vok::doctor
