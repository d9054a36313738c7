#include "command_line.h"

#include <optional>

#include "common/command_line.h"

namespace vok::check {

namespace {

constexpr const char* description =
    "Drives a companion through the library, by window messages and by pipes, and says check by\n"
    "check whether it keeps the contract of vok/companion.h. No printer and no spooler is needed,\n"
    "and nothing is installed. The file is <model>DRAL.EXE or <model>NEMB.EXE.\n";

}  // namespace

std::optional<Options> parseCommandLine(int count, const char* const* words, int& status) {
    Options options;
    CLI::App app(description, "vok-companion-check");
    app.footer("\nExit status: 0 the companion keeps the contract, 1 it does not, 2 misused.\n");
    app.add_option("COMPANION.EXE", options.companion, "the companion")->required();
    app.add_option("--library", options.library, "the library; else the one beside this program");
    app.add_option("--limit", options.limit,
                   "how many milliseconds an answer, a window or a pipe may take")
        ->check(CLI::Range(1, 86400000))
        ->capture_default_str();
    app.add_flag("--stop", options.stop, "stops at the first check that fails");
    app.add_flag("--json", options.json, "prints the results as JSON");
    app.add_option("--junit", options.junit, "writes them as JUnit XML to this file besides");
    return tools::parse(app, count, words, status) ? std::optional(options) : std::nullopt;
}

}  // namespace vok::check
