#include "command_line.h"

#include <map>
#include <optional>
#include <string>

#include "common/arguments.h"

namespace vok::doctor {

const char* const usage =
    "vok-doctor [DLL] [--printer NAME] [--suffix TEXT] [--spooler-session NUMBER]\n"
    "           [--log on|off|all|default] [--launch] [--json]\n"
    "\n"
    "Says why nothing happens on this machine: looks at everything that the library looks at,\n"
    "in its order, and changes nothing unless told to.\n"
    "\n"
    "DLL                the library; else the one in the printer driver folder\n"
    "--printer NAME     that printer alone; else all that have the model's printer data or\n"
    "                   a print processor that calls the library\n"
    "--suffix TEXT      what DRAL's hidden window bears behind 'DRAL Hidden Window-';\n"
    "                   else the printer's name\n"
    "--spooler-session  look as a spooler in that session would; else the service's own\n"
    "--log              sets the options of the log: on (this library's messages, with the\n"
    "                   numbers of process and thread), off, all (of all programs), or default\n"
    "--launch           also starts the first printer's companions as the library would, and\n"
    "                   waits until they answer\n"
    "--json             prints the findings as JSON\n"
    "\n"
    "Exit status: 0 no problem, 1 problems, 2 misused.\n";

namespace {

bool parseLog(const std::string& word, LogSetting& setting) {
    static const std::map<std::string, LogSetting> settings = {{"on", LogSetting::On},
                                                               {"off", LogSetting::Off},
                                                               {"all", LogSetting::All},
                                                               {"default", LogSetting::Default}};
    const auto found = settings.find(word);
    if (found == settings.end()) {
        return false;
    }
    setting = found->second;
    return true;
}

bool parseSession(const std::string& word, std::optional<unsigned long>& session) {
    session = tools::numberIn(word);
    return session.has_value();
}

// True when the value was understood, or there is none.
template <typename Target>
bool take(const tools::Arguments& arguments, const char* option,
          bool (*parse)(const std::string&, Target&), Target& target, std::string& error) {
    const auto found = arguments.values.find(option);
    if (found == arguments.values.end() || parse(found->second, target)) {
        return true;
    }
    error = std::string(option) + " can't be '" + found->second + "'";
    return false;
}

}  // namespace

std::optional<Options> parseCommandLine(int count, const char* const* words, std::string& error) {
    const auto arguments =
        tools::parseArguments(count, words, {"--launch", "--json", "--help"},
                              {"--printer", "--suffix", "--log", "--spooler-session"}, error);
    if (!arguments) {
        return std::nullopt;
    }
    Options options;
    options.library = arguments->plain;
    options.printer = arguments->value("--printer");
    options.suffix = arguments->value("--suffix");
    options.launch = arguments->has("--launch");
    options.json = arguments->has("--json");
    options.help = arguments->has("--help");
    if (!take(*arguments, "--log", parseLog, options.log, error) ||
        !take(*arguments, "--spooler-session", parseSession, options.spoolerSession, error)) {
        return std::nullopt;
    }
    return options;
}

}  // namespace vok::doctor
