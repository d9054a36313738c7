// The system, and the library whose name tells the model.

#include <fmt/format.h>
#include <vok/companion.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/system.h"
#include "examination.h"
#include "logging/xfiles_log_category.h"
#include "program_file.h"
#include "support/library_module.h"

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

}  // namespace vok::doctor
