#include "doctor.h"

#include <vok/companion.h>

#include <string>

#include "common/agreement.h"
#include "examination.h"
#include "launch/printer_lookup.h"
#include "launch/system_directory.h"

namespace vok::doctor {

std::string Examination::companionPath(const char* fileName) const {
    const std::string name = prefix + fileName;
    if (family == family9x) {
        return pathInSystemDirectory(name.c_str()).text();
    }
    NameBuffer folder;
    GetPrinterDriverDir(folder.data(), NameBuffer::size);
    return folder.text() + name;
}

std::string Examination::hiddenWindow(const Printer& printer) const {
    return VOK_DRAL_HIDDEN +
           (options.suffix.empty() ? sample::titleSuffix(printer.name) : options.suffix);
}

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

}  // namespace vok::doctor
