// The system, and the library whose name tells the model.

#include <vok/companion.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/system_text.h"
#include "examination.h"
#include "launch/printer_lookup.h"
#include "logging/xfiles_log_category.h"
#include "program_file.h"
#include "support/library_module.h"

namespace vok::doctor {

namespace {

constexpr const char* step = "library";
constexpr const char* libraryEnding = "vok.dll";
constexpr std::size_t libraryNameLength = VOK_MODEL_PREFIX_LENGTH + 7;

std::string driverFolder() {
    NameBuffer folder;
    GetPrinterDriverDir(folder.data(), NameBuffer::size);
    return folder.text();
}

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

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

// Empty, with the finding made, when there is none.
std::string chooseLibrary(Examination& examination) {
    if (!examination.options.library.empty()) {
        return examination.options.library;
    }
    const std::string folder = driverFolder();
    const std::vector<std::string> names = findLibraries(folder);
    if (names.empty()) {
        examination.report.problem(step, Trouble::LibraryMissing,
                                   "no <model>" + std::string(libraryEnding) + " in " + folder);
        return {};
    }
    if (names.size() > 1 && names[1].size() == libraryNameLength) {
        examination.report.warn(step, Trouble::LibrarySeveral,
                                joined(names) + " in " + folder + ", looking at the first");
    }
    return folder + names.front();
}

bool hasAllExports(HMODULE library, std::string& missing) {
    for (const char* name :
         {VOK_EXPORT_GET_DRAL, VOK_EXPORT_GET_NEMB, VOK_EXPORT_LAUNCH_XFILES,
          VOK_EXPORT_SEND_DRAL_MSG, VOK_EXPORT_SEND_NEMB_MSG, VOK_EXPORT_SEND_MSG_EX}) {
        if (GetProcAddress(library, name) == nullptr) {
            missing = name;
            return false;
        }
    }
    return true;
}

// Loads the DLL, which makes it this process's library to the library's own code.
bool loadLibrary(Examination& examination) {
    const std::string& path = examination.libraryPath;
    const HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) {
        const DWORD error = GetLastError();
        examination.report.problem(step, Trouble::LibraryUnloadable,
                                   path + ": " + tools::errorText(error));
        return false;
    }
    std::string missing;
    if (!hasAllExports(library, missing)) {
        examination.report.problem(step, Trouble::LibraryForeign,
                                   path + " does not export " + missing);
        return false;
    }
    setLibraryModule(library);
    return true;
}

// Another name means another model: other companions, another configuration library.
void checkName(Examination& examination) {
    const std::string name = tools::fileOf(examination.libraryPath);
    const std::string built = nameOfTheBuild(examination.libraryPath);
    const std::string text = examination.libraryPath + ", model '" + examination.prefix + "'";
    const bool rightForm = name.size() == libraryNameLength &&
                           tools::sameName(name.substr(VOK_MODEL_PREFIX_LENGTH), libraryEnding);
    if (rightForm && (built.empty() || tools::sameName(name, built))) {
        examination.report.ok(step, text);
        return;
    }
    const bool alone = !fileExists(examination.companionPath(VOK_DRAL_EXE)) &&
                       !fileExists(examination.companionPath(VOK_NEMB_EXE));
    examination.report.complain(
        !rightForm || alone, step, Trouble::LibraryRenamed,
        text + (built.empty() ? ", a name that no model's library has" : ", built as " + built));
}

}  // namespace

void examineSystem(Examination& examination) {
    examination.family = GetOsFamily();
    std::string text = tools::systemVersion() + ", family " + std::to_string(examination.family);
    if (examination.family == family9x) {
        text += ": the 9x variants";
    } else {
        text += hasSessions(examination.family) ? ": the NT variants, with sessions"
                                                : ": the NT variants, without sessions";
    }
    examination.report.ok("system", text);
}

void examineLibrary(Examination& examination) {
    examination.libraryPath = chooseLibrary(examination);
    if (examination.libraryPath.empty()) {
        return;
    }
    examination.libraryLoaded = loadLibrary(examination);
    if (examination.libraryLoaded) {
        appendModuleNamePrefix(examination.prefix, libraryModule());
        checkName(examination);
    } else {
        examination.prefix =
            tools::fileOf(examination.libraryPath).substr(0, VOK_MODEL_PREFIX_LENGTH);
    }
}

}  // namespace vok::doctor
