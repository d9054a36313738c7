#include "advice.h"

#include <array>
#include <cstddef>
#include <string>

namespace vok::doctor {

namespace {

constexpr std::size_t troubleCount = static_cast<std::size_t>(Trouble::Count);

// In the order of Trouble.
constexpr std::array<Advice, troubleCount> advices = {{
    {"library-missing", "install the printer driver, or name the DLL on the command line",
     Effect::NobodyAsked},
    {"library-renamed", "give the DLL back the name it was built under", Effect::NobodyAsked},
    {"library-unloadable", "install a DLL of this system's kind that is whole",
     Effect::NobodyAsked},
    {"library-foreign", "name the library of the printer driver", Effect::NobodyAsked},
    {"library-several", "name the DLL that is meant on the command line", Effect::None},
    {"configuration-missing", "put the configuration library into the driver folder",
     Effect::NoLog},
    {"configuration-foreign", "install the configuration library of this model", Effect::NoLog},
    {"configuration-refuses", "install the configuration library of this version", Effect::NoLog},
    {"configuration-several", "leave the configuration library in one place, the driver folder",
     Effect::NoLog},
    {"base-key-missing", "install the printer software's settings; the library makes no base key",
     Effect::NoLog},
    {"base-key-access", "run the doctor as administrator, and let the spooler write the key",
     Effect::NoLog},
    {"log-off", "vok-doctor --log on, then repeat what went wrong", Effect::NoLog},
    {"log-masked", "vok-doctor --log on, or set the mask's bits 2 and 8", Effect::NoLog},
    {"option-type", "delete the value; the library makes it anew as a 32-bit number",
     Effect::NoLog},
    {"options-not-set", "see to the configuration library first", Effect::NoLog},
    {"log-not-writable", "let the spooler write the file and its folder", Effect::NoLog},
    {"log-too-large", "move the log away; the library makes a new one", Effect::NoLog},
    {"log-locked", "end the program that holds the log's mutex: every logging call waits for it",
     Effect::NothingPrints},
    {"printer-missing", "add the printer, or name it as OpenPrinter takes it",
     Effect::NothingPrints},
    {"printer-unnamed", "say which printer is meant: --printer NAME", Effect::NobodyAsked},
    {"printer-paused", "resume the printer", Effect::NothingPrints},
    {"job-stuck", "see what the job waits for, or delete it", Effect::JobsWait},
    {"processor-missing", "install the print processor of the driver anew", Effect::NothingPrints},
    {"processor-of-system", "set the printer to the driver's print processor", Effect::NobodyAsked},
    {"processor-foreign", "see whether the printer has the driver's print processor",
     Effect::NobodyAsked},
    {"prefix-missing", "write the model prefix into the printer data 'Printer Prefix'",
     Effect::NothingPrints},
    {"prefix-wrong", "make the printer data 'Printer Prefix' and the DLL's name alike",
     Effect::NothingPrints},
    {"driver-folder", "install the printer driver: the spooler has no such folder",
     Effect::NobodyAsked},
    {"blank-in-path", "keep programs away that an unquoted path with blanks could mean",
     Effect::NobodyAsked},
    {"companion-missing", "put the companion's file into that folder", Effect::NobodyAsked},
    {"companion-not-program", "install the companion's file anew: it is no 64-bit program",
     Effect::NobodyAsked},
    {"file-cut", "install the file anew: it is cut short", Effect::NobodyAsked},
    {"driver-files", "install the printer driver anew", Effect::NothingPrints},
    {"package-versions", "install all files of one version", Effect::NobodyAsked},
    {"no-console", "log on at the console: companions are started there", Effect::NobodyAsked},
    {"wrong-session", "work at the console: companions are started in its session",
     Effect::NobodyAsked},
    {"no-user-token", "log a user on at the console, and let the terminal services run",
     Effect::NobodyAsked},
    {"token-privilege", "run the doctor as LocalSystem to see what the spooler would get",
     Effect::None},
    {"no-environment", "repair the user's profile: nothing is started without its environment",
     Effect::NobodyAsked},
    {"window-missing", "end the companion; the next job starts it anew", Effect::NothingPrints},
    {"window-silent", "end the companion's process; the next job starts it anew",
     Effect::NothingPrints},
    {"mutex-missing", "have the companion hold its mutex: each job starts another one",
     Effect::NobodyAsked},
    {"mutex-foreign", "end the program that holds the mutex: the companion is not started",
     Effect::NothingPrints},
    {"pipe-taken", "end the program that has made the pipe", Effect::NobodyAsked},
    {"companion-not-started", "start the command line by hand and see what the system says",
     Effect::NobodyAsked},
    {"companion-died", "start the command line by hand; look for missing DLLs and crash reports",
     Effect::NobodyAsked},
    {"companion-silent", "run vok-companion-check on the companion", Effect::NothingPrints},
    {"pipe-not-opened", "run vok-companion-check on the companion", Effect::NothingPrints},
}};

}  // namespace

const Advice& adviceFor(Trouble trouble) {
    return advices.at(static_cast<std::size_t>(trouble));
}

const char* toText(Effect effect) {
    constexpr const char* texts[] = {
        "jobs that hang or never print", "jobs whose companions are not asked",
        "jobs that wait in the queue", "a log that is missing or misses records", ""};
    return texts[static_cast<std::size_t>(effect)];
}

std::string pageOf(const Advice& advice) {
    return std::string("docs/troubleshooting.md#") + advice.anchor;
}

}  // namespace vok::doctor
