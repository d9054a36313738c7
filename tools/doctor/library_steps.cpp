// The system; the library, whose name tells the model; the configuration library, and the registry
// key that it names.

#include <fmt/format.h>
#include <vok/companion.h>
#include <vok/config_library.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "common/system.h"
#include "examination.h"
#include "logging/xfiles_log_category.h"
#include "support/config_library.h"
#include "support/library_module.h"
#include "support/module.h"
#include "support/procedure.h"
#include "support/registry_key64.h"

namespace vok::doctor {

namespace {

constexpr const char* libraryEnding = "vok.dll";
constexpr std::size_t libraryNameLength = VOK_MODEL_PREFIX_LENGTH + 7;

// Names of the files in the folder that end as the library's does; the ones of the right length
// first.
std::vector<std::string> findLibraries(const std::string& folder) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "*" + libraryEnding).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        names.emplace_back(found.cFileName);
    } while (FindNextFileA(search, &found) != 0);
    FindClose(search);
    std::stable_partition(names.begin(), names.end(),
                          [](const std::string& name) { return name.size() == libraryNameLength; });
    return names;
}

// Empty, with the finding made, when there is none.
std::string chooseLibrary(const Step& step) {
    const std::string folder = driverFolder();
    const std::vector<std::string> names = findLibraries(folder);
    if (names.empty()) {
        step.problem("library-missing", "no <model>{} in {}", libraryEnding, folder);
        return {};
    }
    if (names.size() > 1 && names[1].size() == libraryNameLength) {
        step.warn("library-several", "{} in {}, looking at the first", fmt::join(names, ", "),
                  folder);
    }
    return folder + names.front();
}

// Loads the DLL, which makes it this process's library to the library's own code.
bool loadLibrary(const Step& step, const std::string& path) {
    const HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) {
        step.problem("library-unloadable", "{}: {}", path, tools::errorText(GetLastError()));
        return false;
    }
    for (const char* name :
         {VOK_EXPORT_GET_DRAL, VOK_EXPORT_GET_NEMB, VOK_EXPORT_LAUNCH_XFILES,
          VOK_EXPORT_SEND_DRAL_MSG, VOK_EXPORT_SEND_NEMB_MSG, VOK_EXPORT_SEND_MSG_EX}) {
        if (GetProcAddress(library, name) == nullptr) {
            step.problem("library-foreign", "{} does not export {}", path, name);
            return false;
        }
    }
    setLibraryModule(library);
    return true;
}

// Another name means another model: other companions, another configuration library.
void checkName(const Examination& examination, const Step& step) {
    const std::string& path = examination.libraryPath;
    const std::string name = tools::fileOf(path);
    const std::string built = nameOfTheBuild(path);
    const bool rightForm = name.size() == libraryNameLength &&
                           tools::sameName(name.substr(VOK_MODEL_PREFIX_LENGTH), libraryEnding);
    if (rightForm && (built.empty() || tools::sameName(name, built))) {
        step.ok("{}, model '{}'", path, examination.prefix);
        return;
    }
    const bool alone = !tools::fileExists(examination.companionPath(VOK_DRAL_EXE)) &&
                       !tools::fileExists(examination.companionPath(VOK_NEMB_EXE));
    step.complain(!rightForm || alone, "library-renamed", "{}, model '{}', {}", path,
                  examination.prefix,
                  built.empty() ? "a name that no model's library has" : "built as " + built);
}

// From now on this process searches libraries where the spooler does, which is a program of the
// system folder: neither beside this program nor in its current folder. Nothing changes where the
// system can't do that.
void searchLikeTheSpooler() {
    constexpr DWORD searchUserDirectories = 0x400;
    constexpr DWORD searchSystemDirectory = 0x800;
    const HMODULE kernel = GetModuleHandleA("kernel32");
    const auto setDefault = procedure<BOOL(WINAPI*)(DWORD)>(kernel, "SetDefaultDllDirectories");
    const auto add = procedure<void*(WINAPI*)(const wchar_t*)>(kernel, "AddDllDirectory");
    if (setDefault == nullptr || add == nullptr ||
        setDefault(searchSystemDirectory | searchUserDirectories) == 0) {
        return;
    }
    std::array<wchar_t, MAX_PATH> windows{};
    GetWindowsDirectoryW(windows.data(), static_cast<UINT>(windows.size()));
    add(windows.data());
    std::wstring path(GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    path.resize(GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size())));
    std::wistringstream folders(path);
    for (std::wstring folder; std::getline(folders, folder, L';');) {
        if (!folder.empty()) {
            add(folder.c_str());
        }
    }
}

void reportUnloaded(const Step& step, const std::string& fileName) {
    const std::string path = driverFolder() + fileName;
    if (const std::string cut = whatIsCut(path); !cut.empty()) {
        step.problem({"file-cut", NoLog}, "{} {}", path, cut);
    } else {
        step.problem("configuration-missing",
                     "{} can be loaded neither where the system searches nor as {}: {}", fileName,
                     path, tools::errorText(Module(fileName, 0).Load()));
    }
}

// Empty, with the finding made, when it names none.
std::string askForBaseKey(const Step& step, const Module& module, const std::string& path) {
    std::string base;
    const std::uint32_t error = getConfigData(module, 0, VOK_CONFIG_REGISTRY_BASE, 0, base);
    if (error == ERROR_INVALID_HANDLE) {
        step.problem("configuration-foreign", "{} does not export {}", path,
                     VOK_EXPORT_GET_CONFIG_DATA);
    } else if (error != 0) {
        step.problem("configuration-refuses", "{} tells no size for item {}", path,
                     static_cast<int>(VOK_CONFIG_REGISTRY_BASE));
    } else if (base.empty() || base.front() == '\\' || base.back() == '\\') {
        step.problem("configuration-refuses", "{} names no key: '{}'", path, base);
    } else {
        step.ok("{} answers '{}'", path, base);
        return base;
    }
    return {};
}

// One that the system's search finds hides the driver's own. Where they name different keys, no key
// is certain to be the right one any more.
void compareWithDriverFolder(Examination& examination, const Step& step, const std::string& path) {
    const std::string own = driverFolder() + examination.prefix + VOK_CONFIG_LIBRARY_FILE;
    if (tools::sameName(path, own) || !tools::fileExists(own)) {
        return;
    }
    Module module(own, 0);
    const std::uint32_t error = module.Load();
    std::string base;
    if (error == ERROR_SUCCESS &&
        getConfigData(module, 0, VOK_CONFIG_REGISTRY_BASE, 0, base) == 0 &&
        tools::sameName(base, examination.basePath)) {
        step.note("configuration-several", "{} is loaded instead of {}, and names the same key",
                  path, own);
        return;
    }
    step.problem("configuration-several", "{} is loaded instead of {}, which {}", path, own,
                 error != ERROR_SUCCESS ? "can't be loaded: " + tools::errorText(error)
                                        : "names '" + base + "'");
    examination.basePath.clear();
}

void openBaseKey(Examination& examination) {
    const Step step = examination.step("base key");
    const std::string name = "HKEY_LOCAL_MACHINE\\" + examination.basePath;
    try {
        const RegistryKey64 key(examination.basePath.c_str(), false, HKEY_LOCAL_MACHINE);
        step.ok("{}", name);
    } catch (const Win32Exception& failure) {
        step.problem(failure.getErrorCode() == ERROR_ACCESS_DENIED ? Trouble("base-key-access")
                                                                   : Trouble("base-key-missing"),
                     "{}: {}", name, textOf(failure));
        examination.basePath.clear();
    }
}

}  // namespace

void examineSystem(Examination& examination) {
    examination.family = GetOsFamily();
    const char* variants = examination.family == family9x    ? "the 9x variants"
                           : hasSessions(examination.family) ? "the NT variants, with sessions"
                                                             : "the NT variants, without sessions";
    examination.step("system").ok("{}, family {}: {}", tools::systemVersion(),
                                  static_cast<int>(examination.family), variants);
}

void examineLibrary(Examination& examination) {
    const Step step = examination.step("library");
    examination.libraryPath =
        examination.options.library.empty() ? chooseLibrary(step) : examination.options.library;
    if (examination.libraryPath.empty()) {
        return;
    }
    examination.libraryLoaded = loadLibrary(step, examination.libraryPath);
    if (examination.libraryLoaded) {
        appendModuleNamePrefix(examination.prefix, libraryModule());
        checkName(examination, step);
    } else {
        examination.prefix =
            tools::fileOf(examination.libraryPath).substr(0, VOK_MODEL_PREFIX_LENGTH);
    }
}

void examineConfiguration(Examination& examination) {
    if (examination.prefix.empty()) {
        return;
    }
    const Step step = examination.step("configuration library");
    searchLikeTheSpooler();
    const Module* module = getConfigLibrary(examination.prefix);
    if (module == nullptr || module->getHandle() == nullptr) {
        reportUnloaded(step, examination.prefix + VOK_CONFIG_LIBRARY_FILE);
    } else {
        const std::string path = tools::pathOf(module->getHandle());
        examination.basePath = askForBaseKey(step, *module, path);
        compareWithDriverFolder(examination, step, path);
    }
    releaseConfigLibrary();
    if (!examination.basePath.empty()) {
        openBaseKey(examination);
    }
}

}  // namespace vok::doctor
