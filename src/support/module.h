// One dynamically loaded library of the printer software.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "support/inline_text.h"

namespace vok {

// Knows where printer-driver files live and unloads its library when it goes. Failures are
// returned as system error codes and logged.
class Module {
  public:
    // Loads nothing yet. withHostPrefix: put the host program's model prefix before fileName.
    Module(const std::string& fileName, std::uint32_t withHostPrefix);
    virtual ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // By the system's search order, else from the printer driver directory. 0 on success or when
    // already loaded.
    std::uint32_t Load();

    // Keeps the handle: the destructor unloads once more.
    std::uint32_t UnLoad();

    // Null when nothing is loaded, for a null name and for one that is not exported.
    FARPROC getProcAddress(const char* name) const;

    // The printer driver directory with the subdirectory of the system's driver version and a
    // backslash. Returns 0, or the system's error, which may be 0 as well, with `out` untouched.
    static std::uint32_t GetPrinterPath(std::string& out);

    HMODULE getHandle() const { return handle_; }
    void setHandle(HMODULE handle) { handle_ = handle; }
    void setFileName(const std::string& name) { fileName_ = name; }

  private:
    // As long as it can be: the system's buffer and the longest version directory.
    using PrinterPath = InlineText<264>;

    // False, with the error, when the system doesn't tell the directory.
    static bool readPrinterPath(PrinterPath& out, std::uint32_t& error);

    PrinterPath printerPath_;
    std::string fileName_;
    std::string namePrefix_;
    HMODULE handle_ = nullptr;
};

}  // namespace vok
