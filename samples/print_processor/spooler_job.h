/**
 * @file spooler_job.h
 * A job of the spooler: where its bytes come from and go to, and what the spooler wants of it.
 */
#pragma once

#include <string>
#include <string_view>

#include "job/job_driver.h"
#include "printer_handle.h"
#include "processor_api.h"

namespace vok::sample {

/// Made by OpenPrintProcessor, used by one printing thread; `control` may be called by another.
class SpoolerJob final : public JobHost {
  public:
    SpoolerJob() = default;
    ~SpoolerJob() override;

    /// Opens port and printer. The result is a system error code.
    /// @param portName What the spooler wants the output written to, as OpenPrinter takes it.
    DWORD open(const std::wstring& portName, const OpenData& data);

    /// Processes the document, which the spooler names as OpenPrinter takes it. The result is a
    /// system error code: 0 as well for a job that was refused or cancelled, for nothing is left
    /// to be done about it.
    DWORD print(const std::wstring& documentName);

    /// Does what ControlPrintProcessor asks: pause, go on, or cancel. False for anything else.
    bool control(DWORD command);

    bool read(char* buffer, DWORD size, DWORD& count) override;
    bool openPort() override;
    bool write(std::string_view bytes) override;
    bool cancelled() override;
    void pause(DWORD milliseconds) override;
    DWORD ticks() override;
    void say(const std::string& text) override;

  private:
    [[nodiscard]] std::string modelPrefix() const;
    [[nodiscard]] std::string portOfPrinter() const;
    [[nodiscard]] bool deletedInSpooler() const;
    void dropJob();

    PrinterHandle port_;
    PrinterHandle printer_;
    PrinterHandle document_;
    std::wstring printerName_;
    std::wstring title_;
    std::wstring datatype_;
    std::wstring outputFile_;
    DWORD id_ = 0;
    bool outputBegun_ = false;
    HANDLE running_ = nullptr;  ///< An event; not set while the job is paused.
    volatile LONG aborted_ = 0;
};

}  // namespace vok::sample
