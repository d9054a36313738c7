// The steps of the examination. Each looks at one thing that the library will need, writes its
// findings into the report and leaves what later steps need.
#ifndef VOK_TOOLS_DOCTOR_EXAMINATION_H
#define VOK_TOOLS_DOCTOR_EXAMINATION_H

#include <windows.h>

#include <cstdint>
#include <string>

#include "command_line.h"
#include "report.h"
#include "support/os_family.h"

namespace vok::doctor {

struct Examination {
    Options options;
    Report report;

    OsFamily family = familyNT6;
    std::string libraryPath;  // empty when there is none
    bool libraryLoaded = false;
    std::string prefix;    // of the model; empty when it is not known
    std::string basePath;  // below HKEY_LOCAL_MACHINE; empty when it is not known
    std::uint32_t commonLog = 0;
    std::string printer;  // empty when none could be opened
    std::string port;
    bool networkPort = false;
    unsigned long jobs = 0;     // in the printer's queue
    bool spoolerApart = false;  // the pipe route

    // Full path of a companion's file, whose name begins behind the model prefix.
    std::string companionPath(const char* fileName) const;
    // "DEMODRAL - Office" from VOK_DRAL_TITLE.
    std::string title(const char* part) const { return prefix + part + printer; }
    // Class and title of DRAL's hidden window.
    std::string hiddenWindow() const;
};

void examineSystem(Examination& examination);
void examineLibrary(Examination& examination);
void examineConfiguration(Examination& examination);
void examineOptions(Examination& examination);
void examineLog(Examination& examination);
void examinePrinter(Examination& examination);
void examineFiles(Examination& examination);
void examineSessions(Examination& examination);
void examineUserToken(Examination& examination);
void examineCompanions(Examination& examination);
void launchCompanions(Examination& examination);

}  // namespace vok::doctor

#endif
