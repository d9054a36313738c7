#include "advice.h"

#include <array>
#include <cstddef>
#include <string>

namespace vok::doctor {

namespace {

constexpr std::size_t troubleCount = static_cast<std::size_t>(Trouble::Count);

// In the order of Trouble.
constexpr std::array<Advice, troubleCount> advices = {{
    {"library-missing", "install the printer driver, or name the DLL on the command line"},
    {"library-renamed", "give the DLL back the name it was built under"},
    {"library-unloadable", "install a DLL of this system's kind that is whole"},
    {"library-foreign", "name the library of the printer driver"},
    {"library-several", "name the DLL that is meant on the command line"},
    {"configuration-missing", "put the configuration library into the driver folder"},
    {"configuration-foreign", "install the configuration library of this model"},
    {"configuration-refuses", "install the configuration library of this version"},
    {"base-key-missing", "install the printer software's settings; the library makes no base key"},
    {"base-key-access", "run the doctor as administrator, and let the spooler write the key"},
    {"log-off", "vok-doctor --log on, then repeat what went wrong"},
    {"log-masked", "vok-doctor --log on, or set the mask's bits 2 and 8"},
    {"option-type", "delete the value; the library makes it anew as a 32-bit number"},
    {"log-not-writable", "let the spooler write the file and its folder"},
    {"log-locked", "end the program that holds the log's mutex: every logging call waits for it"},
    {"printer-missing", "add the printer, or name it as OpenPrinter takes it"},
    {"printer-unnamed", "say which printer is meant: --printer NAME"},
    {"printer-paused", "resume the printer"},
    {"prefix-missing", "write the model prefix into the printer data 'Printer Prefix'"},
    {"prefix-wrong", "make the printer data 'Printer Prefix' and the DLL's name alike"},
    {"driver-folder", "install the printer driver: the spooler has no such folder"},
    {"blank-in-path", "keep programs away that an unquoted path with blanks could mean"},
    {"companion-missing", "put the companion's file into that folder"},
    {"companion-not-program", "install the companion's file anew: it is no 64-bit program"},
    {"no-console", "log on at the console: companions are started there"},
    {"wrong-session", "work at the console: companions are started in its session"},
    {"no-user-token", "log a user on at the console, and let the terminal services run"},
    {"token-privilege", "run the doctor as LocalSystem to see what the spooler would get"},
    {"no-environment", "repair the user's profile: nothing is started without its environment"},
    {"window-missing", "end the companion; the next job starts it anew"},
    {"mutex-missing", "have the companion hold its mutex: each job starts another one"},
    {"pipe-taken", "end the program that has made the pipe"},
    {"companion-not-started", "start the command line by hand and see what the system says"},
    {"companion-died", "start the command line by hand; look for missing DLLs and crash reports"},
    {"companion-silent", "run vok-companion-check on the companion"},
    {"pipe-not-opened", "run vok-companion-check on the companion"},
}};

}  // namespace

const Advice& adviceFor(Trouble trouble) {
    return advices.at(static_cast<std::size_t>(trouble));
}

std::string pageOf(const Advice& advice) {
    return std::string("docs/troubleshooting.md#") + advice.anchor;
}

}  // namespace vok::doctor
