#include "host.h"

#include <fmt/format.h>
#include <vok/companion.h>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/machine.h"
#include "common/other_session.h"
#include "common/system.h"
#include "spooler_stand_in.h"

namespace vok::check {

namespace {

std::string temporaryFolder() {
    std::array<char, MAX_PATH> path{};
    GetTempPathA(static_cast<DWORD>(path.size()), path.data());
    return fmt::format("{}vok-companion-check-{}", path.data(), GetCurrentProcessId());
}

}  // namespace

Host::Host(const Options& options, sample::Identity identity)
    : options_(options), identity_(std::move(identity)), folder_(temporaryFolder()) {}

Host::~Host() {
    endCompanions();
    library_.unload();
    DeleteFileA((folder_ + "\\" + prefix() + "vok.dll").c_str());
    RemoveDirectoryA(folder_.c_str());
}

void Host::prepare() {
    const std::string source = options_.library.empty() ? tools::folderOf(tools::pathOf(nullptr)) +
                                                              "\\" VOK_MODEL_PREFIX "vok.dll"
                                                        : options_.library;
    CreateDirectoryA(folder_.c_str(), nullptr);
    // The library takes the model's prefix from its own file name.
    const std::string copy = folder_ + "\\" + prefix() + "vok.dll";
    if (CopyFileA(source.c_str(), copy.c_str(), FALSE) == 0) {
        throw std::runtime_error(fmt::format("{} can't be copied to {}: {}", source, copy,
                                             tools::errorText(GetLastError())));
    }
    if (const DWORD error = library_.load(folder_, prefix()); error != ERROR_SUCCESS) {
        throw std::runtime_error(copy + " can't be loaded: " + tools::errorText(error));
    }
    std::array<char, MAX_PATH> companion{};
    GetFullPathNameA(options_.companion.c_str(), static_cast<DWORD>(companion.size()),
                     companion.data(), nullptr);
    const std::string missing = standIn(library_.module(), companion.data(), prefix());
    if (!missing.empty()) {
        throw std::runtime_error(copy + " does not call " + missing);
    }
}

void Host::takeRoute(Route route) {
    route_ = route;
    // The library takes the pipe route when the sessions differ.
    const DWORD console = WTSGetActiveConsoleSessionId();
    const DWORD other = console == 0 ? 1 : 0;
    sample::moveToSession(library_.module(), route == Route::Pipe ? other : console);
}

std::string Host::newPrinter() {
    return fmt::format("Check {}-{}", GetCurrentProcessId(), ++printers_);
}

std::string Host::title(sample::Role role, const std::string& printer) const {
    if (role == sample::Role::Nemb) {
        return prefix() + VOK_NEMB_TITLE + printer;
    }
    return (sample::is9x() ? "" : prefix()) + VOK_DRAL_TITLE + printer;
}

std::string Host::windowClass(sample::Role role, const std::string& printer) const {
    return role == sample::Role::Dral ? VOK_DRAL_HIDDEN + sample::titleSuffix(printer)
                                      : prefix() + VOK_NEMB_TITLE;
}

std::string Host::pipeName(const std::string& printer) const {
    return (isDral() ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) + printer;
}

}  // namespace vok::check
