// The steps of the examination. Each looks at one thing that the library will need, writes its
// findings into the report and leaves what later steps need.
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "launch/port_name.h"
#include "report.h"
#include "support/exception.h"
#include "support/os_family.h"

namespace vok::doctor {

// What was asked for on the command line.
struct Options {
    std::string library;  // path of the DLL; empty: the one in the driver folder
    std::string printer;  // empty: all of the model
    std::string suffix;   // what follows "DRAL Hidden Window-"; empty: the printer's name
    std::optional<unsigned long> spoolerSession;  // none: where the spooler's service runs
    std::string log;  // what becomes of the options of the log: "on", …; empty: nothing
    bool launch = false;
    bool json = false;
};

// What the spooler tells of a printer's driver.
struct Driver {
    std::string name;
    std::set<std::string> files;  // none when it does not tell
    unsigned long error = 0;
};

// A printer that is looked at; what the spooler does not tell is empty.
struct Printer {
    std::string name;
    std::string port;
    std::string processor;
    unsigned long status = 0;
    unsigned long jobs = 0;  // in its queue
    Driver driver;

    // The port's name as the library takes it, which tells whether it is a network port.
    std::string localPort() const { return StripComputerName(port.c_str()); }
    bool hasNetworkPort() const { return IsUncPath(localPort()); }
};

struct Examination {
    Options options;
    Report report;

    OsFamily family = familyNT6;
    std::string libraryPath;  // empty when there is none
    bool libraryLoaded = false;
    std::string prefix;    // of the model; empty when it is not known
    std::string basePath;  // below HKEY_LOCAL_MACHINE; empty when it is not known
    std::uint32_t commonLog = 0;
    bool logging = false;
    std::vector<Printer> printers;  // of this model, and could be opened; the first is launched for
    bool spoolerApart = false;      // the pipe route

    Step step(const std::string& name) { return Step(report, name); }
    // Full path of a companion's file, whose name begins behind the model prefix.
    std::string companionPath(const char* fileName) const;
    // "DEMODRAL - Office" from VOK_DRAL_TITLE.
    std::string title(const char* part, const Printer& printer) const {
        return prefix + part + printer.name;
    }
    // Class and title of DRAL's hidden window.
    std::string hiddenWindow(const Printer& printer) const;
};

void examineSystem(Examination& examination);
void examineLibrary(Examination& examination);
void examineConfiguration(Examination& examination);
void examineOptions(Examination& examination);
void examineLog(Examination& examination);
void examinePrinters(Examination& examination);
void examineProcessor(Examination& examination, const Printer& printer);
void examinePackage(Examination& examination);
void examineSessions(Examination& examination);
void examineUserToken(Examination& examination);
void examineCompanions(Examination& examination);
void launchCompanions(Examination& examination);

// With a backslash at its end.
std::string driverFolder();

// "RegOpenKeyEx error 5, Access is denied": what the library's code failed in, and why.
std::string textOf(const Win32Exception& failure);

// "in error, out of paper": the names of the bits that are set.
std::string bitNames(std::uint32_t bits,
                     std::initializer_list<std::pair<std::uint32_t, const char*>> names);

// The name that the file was built under, by its version resource; empty when it tells none.
std::string nameOfTheBuild(const std::string& path);

// "has 512 of its 2048 bytes" when the file is shorter than its own headers say; else empty, for
// what is no program or not there too.
std::string whatIsCut(const std::string& path);

// Whether the spooler's print processor of that name calls the library, by the text of its file.
bool callsTheLibrary(const std::string& processor);

}  // namespace vok::doctor
