#include "host.h"

#include <vok/companion.h>

#include <array>
#include <cctype>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/machine.h"
#include "common/other_session.h"
#include "common/system_text.h"
#include "spooler_stand_in.h"

namespace vok::check {

namespace {

std::string ownFolder() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return tools::folderOf(path.data());
}

std::string temporaryFolder() {
    std::array<char, MAX_PATH> path{};
    GetTempPathA(static_cast<DWORD>(path.size()), path.data());
    return path.data() + ("vok-companion-check-" + std::to_string(GetCurrentProcessId()));
}

}  // namespace

std::string titleOf(sample::Role role, const std::string& prefix, const std::string& printer) {
    if (role == sample::Role::Nemb) {
        return prefix + VOK_NEMB_TITLE + printer;
    }
    return (sample::is9x() ? "" : prefix) + VOK_DRAL_TITLE + printer;
}

Host::Host(const Options& options, sample::Identity identity)
    : options_(options), identity_(std::move(identity)), folder_(temporaryFolder()) {}

Host::~Host() {
    endCompanions();
    library_.unload();
    DeleteFileA((folder_ + "\\" + prefix() + "vok.dll").c_str());
    RemoveDirectoryA(folder_.c_str());
}

std::string Host::prepare() {
    const std::string source =
        options_.library.empty() ? ownFolder() + "\\" VOK_MODEL_PREFIX "vok.dll" : options_.library;
    CreateDirectoryA(folder_.c_str(), nullptr);
    // The library takes the model's prefix from its own file name.
    const std::string copy = folder_ + "\\" + prefix() + "vok.dll";
    if (CopyFileA(source.c_str(), copy.c_str(), FALSE) == 0) {
        const DWORD error = GetLastError();
        return source + " can't be copied to " + copy + ": " + tools::errorText(error);
    }
    const DWORD error = library_.load(folder_, prefix());
    if (error != ERROR_SUCCESS) {
        return copy + " can't be loaded: " + tools::errorText(error);
    }
    std::array<char, MAX_PATH> companion{};
    GetFullPathNameA(options_.companion.c_str(), static_cast<DWORD>(companion.size()),
                     companion.data(), nullptr);
    const std::string missing = standIn(library_.module(), companion.data(), prefix());
    return missing.empty() ? "" : copy + " does not call " + missing;
}

void Host::takeRoute(Route route) {
    route_ = route;
    // The library takes the pipe route when the sessions differ.
    const DWORD console = WTSGetActiveConsoleSessionId();
    const DWORD other = console == 0 ? 1 : 0;
    sample::moveToSession(library_.module(), route == Route::Pipe ? other : console);
}

std::string Host::newPrinter() {
    ++printers_;
    return "Check " + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(printers_);
}

std::string Host::title(const std::string& printer) const {
    return titleOf(isDral() ? sample::Role::Dral : sample::Role::Nemb, prefix(), printer);
}

std::string Host::hiddenTitle(const std::string& printer) const {
    return sample::is9x() ? title(printer) : windowClass(printer);
}

std::string Host::windowClass(const std::string& printer) const {
    return isDral() ? VOK_DRAL_HIDDEN + sample::titleSuffix(printer) : prefix() + VOK_NEMB_TITLE;
}

std::string Host::mutexName(const std::string& printer) const {
    std::string name = title(printer);
    for (char& letter : name) {
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    return VOK_MUTEX_PREFIX + name;
}

std::string Host::pipeName(const std::string& printer) const {
    return (isDral() ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) + printer;
}

std::string Host::arguments(const std::string& printer) const {
    return VOK_ARG_PRINTER + printer + (isDral() ? "" : VOK_ARG_JOB);
}

}  // namespace vok::check
