// The configuration library, and the registry key that it names.

#include <vok/config_library.h>

#include <array>
#include <cstdint>
#include <string>

#include "common/system_text.h"
#include "examination.h"
#include "program_file.h"
#include "search_order.h"
#include "support/config_library.h"
#include "support/exception.h"
#include "support/module.h"
#include "support/registry_key64.h"

namespace vok::doctor {

namespace {

constexpr const char* step = "configuration library";
constexpr const char* keyStep = "base key";

std::string pathOf(HMODULE module) {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

void reportMissing(Examination& examination, const std::string& fileName) {
    Module again(fileName, 0);
    const std::uint32_t error = again.Load();
    std::string folder;
    Module::GetPrinterPath(folder);
    examination.report.problem(step, Trouble::ConfigMissing,
                               fileName + " is neither where the system searches nor in " + folder +
                                   ": " + tools::errorText(error));
}

// What the library says to the question for its key, and the key's path where it tells it.
std::uint32_t ask(const Module& module, std::string& base) {
    return getConfigData(module, 0, VOK_CONFIG_REGISTRY_BASE, 0, base);
}

void askForBaseKey(Examination& examination, const Module& module) {
    const std::string path = pathOf(module.getHandle());
    std::string base;
    switch (ask(module, base)) {
        case 0:
            break;
        case ERROR_INVALID_HANDLE:
            examination.report.problem(step, Trouble::ConfigForeign,
                                       path + " does not export " VOK_EXPORT_GET_CONFIG_DATA);
            return;
        default:
            examination.report.problem(
                step, Trouble::ConfigRefuses,
                path + " tells no size for item " + std::to_string(VOK_CONFIG_REGISTRY_BASE));
            return;
    }
    if (base.empty() || base.front() == '\\' || base.back() == '\\') {
        examination.report.problem(step, Trouble::ConfigRefuses,
                                   path + " names no key: '" + base + "'");
        return;
    }
    examination.report.ok(step, path + " answers '" + base + "'");
    examination.basePath = base;
}

// One that the system's search finds hides the driver's own. Where they name different keys, no key
// is certain to be the right one any more.
void compareWithDriverFolder(Examination& examination, const std::string& path) {
    std::string own;
    Module::GetPrinterPath(own);
    own += examination.prefix + VOK_CONFIG_LIBRARY_FILE;
    if (tools::sameName(path, own) || !fileExists(own)) {
        return;
    }
    Module module(own, 0);
    const std::uint32_t error = module.Load();
    std::string base;
    if (error == ERROR_SUCCESS && ask(module, base) == 0 &&
        tools::sameName(base, examination.basePath)) {
        examination.report.note(step, Trouble::ConfigSeveral,
                                path + " is loaded instead of " + own + ", and names the same key");
        return;
    }
    const std::string other = error != ERROR_SUCCESS ? "can't be loaded: " + tools::errorText(error)
                                                     : "names '" + base + "'";
    examination.report.problem(step, Trouble::ConfigSeveral,
                               path + " is loaded instead of " + own + ", which " + other);
    examination.basePath.clear();
}

void openBaseKey(Examination& examination) {
    const std::string name = "HKEY_LOCAL_MACHINE\\" + examination.basePath;
    try {
        const RegistryKey64 key(examination.basePath.c_str(), false, HKEY_LOCAL_MACHINE);
        examination.report.ok(keyStep, name);
    } catch (const Win32Exception& failure) {
        const bool denied = failure.getErrorCode() == ERROR_ACCESS_DENIED;
        examination.report.problem(
            keyStep, denied ? Trouble::BaseKeyAccess : Trouble::BaseKeyMissing,
            name + ": " + failure.getMessage() + " " + tools::errorText(failure.getErrorCode()));
        examination.basePath.clear();
    }
}

}  // namespace

void examineConfiguration(Examination& examination) {
    if (examination.prefix.empty()) {
        return;
    }
    searchLikeTheSpooler();
    const Module* module = getConfigLibrary(examination.prefix);
    if (module == nullptr || module->getHandle() == nullptr) {
        reportMissing(examination, examination.prefix + VOK_CONFIG_LIBRARY_FILE);
    } else {
        const std::string path = pathOf(module->getHandle());
        askForBaseKey(examination, *module);
        compareWithDriverFolder(examination, path);
    }
    releaseConfigLibrary();
    if (!examination.basePath.empty()) {
        openBaseKey(examination);
    }
}

}  // namespace vok::doctor
