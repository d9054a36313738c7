// The files of the driver: all there, whole, and of one version. Among them is the print processor:
// whoever does not call the library has no companion asked.

#include <windows.h>

#include <fmt/format.h>
#include <vok/companion.h>
#include <vok/config_library.h>
#include <vok/vok.h>
#include <winspool.h>
#include <winver.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "common/system.h"
#include "examination.h"

namespace vok::doctor {

namespace {

std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The structure at that place of the file; all zero, and the needed size raised, when the file ends
// before.
template <typename Part>
Part partAt(const std::string& bytes, std::uint64_t offset, std::uint64_t& needed) {
    Part part = {};
    needed = std::max(needed, offset + sizeof part);
    if (offset + sizeof part <= bytes.size()) {
        std::memcpy(&part, bytes.data() + offset, sizeof part);
    }
    return part;
}

// How many bytes the headers promise: sections, and the signature behind them. 0 for no program.
std::uint64_t promisedSize(const std::string& bytes) {
    std::uint64_t needed = 0;
    const auto dos = partAt<IMAGE_DOS_HEADER>(bytes, 0, needed);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE) {
        return 0;
    }
    const auto start = static_cast<std::uint32_t>(dos.e_lfanew);
    // Header and size of both kinds are in the same places, the directories are not.
    const auto header = partAt<IMAGE_NT_HEADERS64>(bytes, start, needed);
    std::uint64_t at = start + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) +
                       header.FileHeader.SizeOfOptionalHeader;
    for (int count = 0; count < header.FileHeader.NumberOfSections; ++count) {
        const auto section = partAt<IMAGE_SECTION_HEADER>(bytes, at, needed);
        at += sizeof section;
        if (section.PointerToRawData != 0) {
            needed =
                std::max(needed, std::uint64_t{section.PointerToRawData} + section.SizeOfRawData);
        }
    }
    if (header.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC &&
        header.OptionalHeader.NumberOfRvaAndSizes > IMAGE_DIRECTORY_ENTRY_SECURITY) {
        const auto& signature = header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
        needed = std::max(needed, std::uint64_t{signature.VirtualAddress} + signature.Size);
    }
    return needed;
}

// A value of the version resource; null when there is none.
void* versionValue(const std::string& path, const char* name, std::vector<char>& block) {
    DWORD ignored = 0;
    UINT length = 0;
    void* value = nullptr;
    block.resize(GetFileVersionInfoSizeA(path.c_str(), &ignored));
    if (block.empty() ||
        GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) == 0 ||
        VerQueryValueA(block.data(), name, &value, &length) == 0) {
        return nullptr;
    }
    return value;
}

// Whether the text stands somewhere in the file, as the names of functions do that a program calls
// by name.
bool holdsText(const std::string& path, const std::string& text) {
    return readAll(path).find(text) != std::string::npos;
}

// "1.2.3.0" by the version resource; empty when there is none.
std::string versionOf(const std::string& path) {
    std::vector<char> block;
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(versionValue(path, "\\", block));
    if (info == nullptr) {
        return {};
    }
    return fmt::format("{}.{}.{}.{}", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                       HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
}

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

std::string nameOfTheBuild(const std::string& path) {
    std::vector<char> block;
    const void* text = versionValue(path, "\\StringFileInfo\\040904E4\\OriginalFilename", block);
    return text == nullptr ? std::string() : static_cast<const char*>(text);
}

std::string whatIsCut(const std::string& path) {
    const std::string bytes = readAll(path);
    const std::uint64_t promised = promisedSize(bytes);
    return bytes.size() >= promised ? std::string()
                                    : fmt::format("has {} of its {} bytes", bytes.size(), promised);
}

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
