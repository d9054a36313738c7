// exhausted_print FILE K once|ever: prints a file through the spooler, which works inside this very
// process, while the library in it is given no memory the k-th time that it asks, or from then on.
// Exit status: 0 when that happened and the process lived on, 1 when there was no such time, 2
// misused.

#include <windows.h>
#include <winspool.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "allocations.h"
#include "common/file.h"
#include "common/machine.h"
#include "common/options.h"
#include "job/vok_library.h"

namespace {

// True when the spooler took the whole job, whatever has become of it then.
bool print(std::string& document) {
    char printerName[] = "Demo Printer";
    char title[] = "exhausted";
    char datatype[] = "RAW";
    DOC_INFO_1A info{title, nullptr, datatype};
    HANDLE printer = nullptr;
    DWORD written = 0;
    if (OpenPrinterA(printerName, &printer, nullptr) == 0)
        return false;
    const bool taken = StartDocPrinterA(printer, 1, reinterpret_cast<BYTE*>(&info)) != 0 &&
                       WritePrinter(printer, document.data(), static_cast<DWORD>(document.size()),
                                    &written) != 0 &&
                       written == document.size();
    EndDocPrinter(printer);
    ClosePrinter(printer);
    return taken;
}

}  // namespace

int main(int count, char** words) {
    std::optional<std::string> document;
    if (count != 4 || !(document = vok::sample::readFile(words[1])))
        return vok::sample::ExitMisused;
    // Loaded before the print processor loads it, so that both have the same one.
    vok::sample::VokLibrary library;
    if (library.load(vok::sample::driverDirectory(), VOK_MODEL_PREFIX) != ERROR_SUCCESS ||
        !vok::test::failAllocation(library.module(), std::strtol(words[2], nullptr, 10),
                                   std::strcmp(words[3], "ever") == 0))
        return vok::sample::ExitMisused;
    const bool taken = print(*document);
    return taken && vok::test::failedAllocations() > 0 ? vok::sample::ExitDone
                                                       : vok::sample::ExitFailed;
}
