// The configuration library, and the registry key that it names.

#include <vok/config_library.h>

#include <array>
#include <cstdint>
#include <string>

#include "common/system_text.h"
#include "examination.h"
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

void askForBaseKey(Examination& examination, const Module& module) {
    const std::string path = pathOf(module.getHandle());
    std::string base;
    switch (getConfigData(module, 0, VOK_CONFIG_REGISTRY_BASE, 0, base)) {
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
        askForBaseKey(examination, *module);
    }
    releaseConfigLibrary();
    if (!examination.basePath.empty()) {
        openBaseKey(examination);
    }
}

}  // namespace vok::doctor
