// vok-doctor: why does nothing happen on this machine?

#include <optional>
#include <string>

#include "common/command_line.h"
#include "examination.h"
#include "report.h"

namespace vok::doctor {

namespace {

constexpr const char* program = "vok-doctor";
constexpr const char* description =
    "Says why nothing happens on this machine: looks at everything that the library looks at,\n"
    "in its order, and changes nothing unless told to.\n";

// The status that the program is to end with, if it is.
std::optional<int> parseCommandLine(int count, const char* const* words, Options& options) {
    CLI::App app(description, program);
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
    app.add_option("--log", options.log,
                   "sets the options of the log: on (this library's messages, with the numbers of "
                   "process and thread), off, all (of all programs), or default")
        ->check(CLI::IsMember({"all", "default", "off", "on"}));
    app.add_flag("--launch", options.launch,
                 "also starts the first printer's companions as the library would, and waits until "
                 "they answer");
    app.add_flag("--json", options.json, "prints the findings as JSON");
    return tools::parse(app, count, words);
}

// Looks at the machine as the library does. Once in a process: it takes the place of the spooler's
// session for good.
Report examine(const Options& options) {
    Examination examination;
    examination.options = options;
    for (const auto step :
         {examineSystem, examineLibrary, examineConfiguration, examineOptions, examineLog,
          examinePrinters, examinePackage, examineSessions, examineUserToken, examineCompanions}) {
        step(examination);
    }
    if (options.launch) {
        launchCompanions(examination);
    }
    return examination.report;
}

}  // namespace

}  // namespace vok::doctor

int main(int count, char** words) {
    vok::doctor::Options options;
    if (const auto status = vok::doctor::parseCommandLine(count, words, options)) {
        return *status;
    }
    const vok::doctor::Report report = vok::doctor::examine(options);
    vok::tools::print(options.json ? report.json() : report.text());
    if (!vok::tools::allWasPrinted(vok::doctor::program)) {
        return vok::tools::exitMisused;
    }
    return report.count(vok::doctor::Level::Problem) == 0 ? 0 : 1;
}
