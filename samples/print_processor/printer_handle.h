/**
 * @file printer_handle.h
 * Owner of one handle of the spooler: of a printer, of a port or of a job.
 */
#pragma once

#include <windows.h>
#include <winspool.h>

#include <string>

namespace vok::sample {

class PrinterHandle {
  public:
    PrinterHandle() = default;
    ~PrinterHandle() {
        if (handle_ != nullptr)
            ClosePrinter(handle_);
    }
    PrinterHandle(const PrinterHandle&) = delete;
    PrinterHandle& operator=(const PrinterHandle&) = delete;

    /// Opens a name as OpenPrinter takes it. False leaves the system's error. To be called once.
    bool open(std::wstring name) { return OpenPrinterW(name.data(), &handle_, nullptr) != 0; }

    [[nodiscard]] HANDLE get() const { return handle_; }

  private:
    HANDLE handle_ = nullptr;
};

}  // namespace vok::sample
