/**
 * @file main.cpp
 * vok-install install|remove|status|check [--printer NAME] [--port NAME] [--driver NAME]
 *             [--from FOLDER]
 *
 * The port is a local one; the path of a file makes the printer print into that file. The driver is
 * one that is installed already; without one the demo's own is installed, and removed. The folder
 * is the one that this program is in, unless told otherwise. `check` changes nothing: it says
 * whether this user may install, and whether the driver is there. Exit status: 0 done (status: all
 * is installed), 1 not, 2 misused.
 */
#include <windows.h>

#include <array>
#include <string>

#include "common/options.h"
#include "setup.h"

namespace {

std::string ownFolder() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string text = path.data();
    return text.substr(0, text.find_last_of('\\'));
}

}  // namespace

int main(int count, char** words) {
    using namespace vok::sample;
    const auto options = parseOptions(count, words, {"--printer", "--port", "--driver", "--from"});
    if (!options)
        return ExitMisused;
    const Setup setup{options->get("--from", ownFolder()),
                      options->get("--printer", default_printer),
                      options->get("--port", "C:\\demo-port.prn"), options->get("--driver", "")};
    if (options->argument == "install")
        return install(setup) ? ExitDone : ExitFailed;
    if (options->argument == "remove")
        return remove(setup) ? ExitDone : ExitFailed;
    if (options->argument == "status")
        return showStatus(setup) ? ExitDone : ExitFailed;
    if (options->argument == "check")
        return mayInstall(setup) ? ExitDone : ExitFailed;
    complain("say install, remove, status or check");
    return ExitMisused;
}
