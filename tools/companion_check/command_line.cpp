#include "command_line.h"

#include <optional>
#include <string>

#include "common/arguments.h"

namespace vok::check {

const char* const usage =
    "vok-companion-check COMPANION.EXE [--library DLL] [--limit MILLISECONDS] [--stop]\n"
    "                    [--json] [--junit FILE]\n"
    "\n"
    "Drives a companion through the library, by window messages and by pipes, and says check by\n"
    "check whether it keeps the contract of vok/companion.h. No printer and no spooler is needed,\n"
    "and nothing is installed. The file is <model>DRAL.EXE or <model>NEMB.EXE.\n"
    "\n"
    "--library DLL  the library; else the one beside this program\n"
    "--limit        how long an answer, a window or a pipe may take, 10000 when not given\n"
    "--stop         stops at the first check that fails\n"
    "--json         prints the results as JSON\n"
    "--junit FILE   writes them as JUnit XML besides\n"
    "\n"
    "Exit status: 0 the companion keeps the contract, 1 it does not, 2 misused.\n";

std::optional<Options> parseCommandLine(int count, const char* const* words, std::string& error) {
    const auto arguments = tools::parseArguments(count, words, {"--stop", "--json", "--help"},
                                                 {"--library", "--limit", "--junit"}, error);
    if (!arguments) {
        return std::nullopt;
    }
    Options options;
    options.companion = arguments->plain;
    options.library = arguments->value("--library");
    options.junit = arguments->value("--junit");
    options.stop = arguments->has("--stop");
    options.json = arguments->has("--json");
    options.help = arguments->has("--help");
    const std::string limit = arguments->value("--limit");
    if (!limit.empty()) {
        options.limit = tools::numberIn(limit).value_or(0);
    }
    if (options.limit == 0) {
        error = "--limit can't be '" + limit + "'";
    } else if (options.companion.empty() && !options.help) {
        error = "say which companion";
    }
    return error.empty() ? std::optional(options) : std::nullopt;
}

}  // namespace vok::check
