// The steps of the examination. Each looks at one thing that the library will need, writes its
// findings into the report and leaves what later steps need.
#ifndef VOK_TOOLS_DOCTOR_EXAMINATION_H
#define VOK_TOOLS_DOCTOR_EXAMINATION_H

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "command_line.h"
#include "report.h"
#include "support/os_family.h"

namespace vok::doctor {

// Milliseconds that a window is given to answer.
inline constexpr unsigned long windowPatience = 5000;

// A printer that is looked at.
struct Printer {
    std::string name;
    std::string port;
    bool networkPort = false;
    unsigned long jobs = 0;  // in its queue
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
void examineProcessor(Examination& examination, const Printer& printer,
                      const std::string& processor);
void examineQueue(Examination& examination, const Printer& printer);
void examinePackage(Examination& examination);
void examineSessions(Examination& examination);
void examineUserToken(Examination& examination);
void examineCompanions(Examination& examination);
void launchCompanions(Examination& examination);

// Whether the spooler's print processor of that name calls the library, by the text of its file.
bool callsTheLibrary(const std::string& processor);

}  // namespace vok::doctor

#endif
