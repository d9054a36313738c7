// What is to be known of a printer and of this library's model before a companion is started.
#pragma once

#include <windows.h>

#include <string>

#include "support/name_buffer.h"

namespace vok {

// Copies the model prefix, the first four characters of this library's own file name, into the
// destination: exactly four characters, padded with NUL, no terminator. Returns 1, or 0 for a null
// destination and when the file name can't be had. (The logging has a rule of its own,
// appendModuleNamePrefix, which logs nothing and does not pad.)
int GetModuleNamePrefix(char* destination);

// The model prefix as text; empty when it can't be had.
NameBuffer modelPrefix();

// NEMB's window class, from the printer's own data, and its title, which is the class followed by
// the printer's name and is not cut. Returns 0 for a null argument and when the printer has no such
// data; the class then holds what there was. Leaves one printer handle open.
int GetNembWindowNames(const char* printerName, NameBuffer* className, std::string* title);

// The directory of the spooler's driver files, with the subdirectory of its driver version and a
// backslash. Returns 1, or 0 when `size` bytes don't do.
int GetPrinterDriverDir(char* buffer, DWORD size);

// The printer of a launch, closed again with this object. A null name goes to the spooler as it is,
// which takes it for its local server.
class PrinterHold {
  public:
    explicit PrinterHold(const char* friendlyName);
    ~PrinterHold();
    PrinterHold(const PrinterHold&) = delete;
    PrinterHold& operator=(const PrinterHold&) = delete;

    // False, and logged, when the printer can't be opened.
    bool isOpen() const { return opened_; }

    // Leaves the printer open for good.
    void keepOpen() { keepOpen_ = true; }

  private:
    HANDLE printer_ = nullptr;
    bool opened_;
    bool keepOpen_ = false;
};

}  // namespace vok
