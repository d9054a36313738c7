/**
 * @file main.cpp
 * vok-install install|remove|status [--printer NAME] [--port NAME] [--from FOLDER]
 *
 * The port is a local one; the path of a file makes the printer print into that file. The folder
 * is the one that this program is in, unless told otherwise. Exit status: 0 done (status: all is
 * installed), 1 not, 2 misused.
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
    const auto options = parseOptions(count, words, {"--printer", "--port", "--from"});
    if (!options)
        return ExitMisused;
    const Setup setup{options->get("--from", ownFolder()),
                      options->get("--printer", default_printer),
                      options->get("--port", "C:\\demo-port.prn")};
    if (options->argument == "install")
        return install(setup) ? ExitDone : ExitFailed;
    if (options->argument == "remove")
        return remove(setup) ? ExitDone : ExitFailed;
    if (options->argument == "status")
        return showStatus(setup) ? ExitDone : ExitFailed;
    complain("say install, remove or status");
    return ExitMisused;
}
