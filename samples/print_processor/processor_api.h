/**
 * @file processor_api.h
 * What the spooler hands to a print processor. The compiler's own headers lack it.
 */
#pragma once

#include <windows.h>
#include <winspool.h>

namespace vok::sample {

/// The second argument of OpenPrintProcessor: a job that is about to be printed.
struct OpenData {
    DEVMODEW* devMode;
    wchar_t* datatype;
    wchar_t* parameters;
    wchar_t* documentName;
    DWORD jobId;
    wchar_t* outputFile;
    wchar_t* printerName;
};

}  // namespace vok::sample
