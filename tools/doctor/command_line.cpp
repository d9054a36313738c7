#include "command_line.h"

#include <map>
#include <optional>
#include <string>

#include "common/command_line.h"

namespace vok::doctor {

namespace {

constexpr const char* description =
    "Says why nothing happens on this machine: looks at everything that the library looks at,\n"
    "in its order, and changes nothing unless told to.\n";

const std::map<std::string, LogSetting> logSettings = {{"on", LogSetting::On},
                                                       {"off", LogSetting::Off},
                                                       {"all", LogSetting::All},
                                                       {"default", LogSetting::Default}};

}  // namespace

std::optional<Options> parseCommandLine(int count, const char* const* words, int& status) {
    Options options;
    CLI::App app(description, "vok-doctor");
    app.footer("\nExit status: 0 no problem, 1 problems, 2 misused.\n");
    app.add_option("DLL", options.library,
                   "the library; else the one in the printer driver folder");
    app.add_option("--printer", options.printer,
                   "that printer alone; else all that have the model's printer data or a print "
                   "processor that calls the library");
    app.add_option("--suffix", options.suffix,
                   "what DRAL's hidden window bears behind 'DRAL Hidden Window-'; else the "
                   "printer's name");
    app.add_option("--spooler-session", options.spoolerSession,
                   "look as a spooler in that session would; else the service's own");
    std::string log;
    app.add_option("--log", log,
                   "sets the options of the log: on (this library's messages, with the numbers of "
                   "process and thread), off, all (of all programs), or default")
        ->check(CLI::IsMember(logSettings));
    app.add_flag("--launch", options.launch,
                 "also starts the first printer's companions as the library would, and waits until "
                 "they answer");
    app.add_flag("--json", options.json, "prints the findings as JSON");
    if (!tools::parse(app, count, words, status)) {
        return std::nullopt;
    }
    options.log = log.empty() ? LogSetting::Leave : logSettings.at(log);
    return options;
}

}  // namespace vok::doctor
