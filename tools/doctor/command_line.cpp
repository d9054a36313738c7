#include "command_line.h"

#include <cstdlib>
#include <map>

namespace vok::doctor {

const char* const usage =
    "vok-doctor [DLL] [--printer NAME] [--suffix TEXT] [--spooler-session NUMBER]\n"
    "           [--log on|off|all|default] [--launch] [--json]\n"
    "\n"
    "Says why nothing happens on this machine: looks at everything that the library looks at,\n"
    "in its order, and changes nothing unless told to.\n"
    "\n"
    "DLL                the library; else the one in the printer driver folder\n"
    "--printer NAME     the printer; else the one that has the model's printer data\n"
    "--suffix TEXT      what DRAL's hidden window bears behind 'DRAL Hidden Window-';\n"
    "                   else the printer's name\n"
    "--spooler-session  look as a spooler in that session would; else the service's own\n"
    "--log              sets the options of the log: on (this library's messages), off,\n"
    "                   all (of all programs, with process and thread), or default\n"
    "--launch           also starts the companions as the library would, and waits for them\n"
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
    char* end = nullptr;
    const unsigned long number = std::strtoul(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0') {
        return false;
    }
    session = number;
    return true;
}

bool takeFlag(const std::string& word, Options& options) {
    if (word == "--launch") {
        options.launch = true;
    } else if (word == "--json") {
        options.json = true;
    } else if (word == "--help") {
        options.help = true;
    } else {
        return false;
    }
    return true;
}

// False, with the reason, when the option is not known or its value not understood.
bool takeOption(const std::string& name, const std::string& value, Options& options,
                std::string& error) {
    bool understood = true;
    if (name == "--printer") {
        options.printer = value;
    } else if (name == "--suffix") {
        options.suffix = value;
    } else if (name == "--log") {
        understood = parseLog(value, options.log);
    } else if (name == "--spooler-session") {
        understood = parseSession(value, options.spoolerSession);
    } else {
        error = "unknown option " + name;
        return false;
    }
    if (!understood) {
        error = name + " can't be '" + value + "'";
    }
    return understood;
}

}  // namespace

std::optional<Options> parseCommandLine(int count, const char* const* words, std::string& error) {
    Options options;
    for (int index = 1; index < count; ++index) {
        const std::string word = words[index];
        if (takeFlag(word, options)) {
            continue;
        }
        if (!word.starts_with("--")) {
            if (!options.library.empty()) {
                error = "one argument too many: " + word;
                return std::nullopt;
            }
            options.library = word;
            continue;
        }
        if (index + 1 == count) {
            error = "no value for " + word + ", or no such option";
            return std::nullopt;
        }
        ++index;
        if (!takeOption(word, words[index], options, error)) {
            return std::nullopt;
        }
    }
    return options;
}

}  // namespace vok::doctor
