#include "command_line.h"

#include <cstdlib>

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

namespace {

bool takeFlag(const std::string& word, Options& options) {
    if (word == "--stop") {
        options.stop = true;
    } else if (word == "--json") {
        options.json = true;
    } else if (word == "--help") {
        options.help = true;
    } else {
        return false;
    }
    return true;
}

bool takeOption(const std::string& name, const std::string& value, Options& options,
                std::string& error) {
    if (name == "--library") {
        options.library = value;
    } else if (name == "--junit") {
        options.junit = value;
    } else if (name == "--limit") {
        options.limit = std::strtoul(value.c_str(), nullptr, 10);
        if (options.limit == 0) {
            error = "--limit can't be '" + value + "'";
        }
    } else {
        error = "unknown option " + name;
    }
    return error.empty();
}

}  // namespace

std::optional<Options> parseCommandLine(int count, const char* const* words, std::string& error) {
    Options options;
    for (int index = 1; index < count && error.empty(); ++index) {
        const std::string word = words[index];
        if (takeFlag(word, options)) {
            continue;
        }
        if (!word.starts_with("--")) {
            error = options.companion.empty() ? "" : "one argument too many: " + word;
            options.companion = word;
        } else if (index + 1 == count) {
            error = "no value for " + word + ", or no such option";
        } else {
            takeOption(word, words[++index], options, error);
        }
    }
    if (error.empty() && options.companion.empty() && !options.help) {
        error = "say which companion";
    }
    return error.empty() ? std::optional(options) : std::nullopt;
}

}  // namespace vok::check
