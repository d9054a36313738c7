/**
 * @file driver_ui.cpp
 * The configuration DLL of the demo printer's driver: what the spooler asks of it when a printer is
 * made. The driver has no property pages and prints RAW documents on A4 paper. A new printer gets
 * its model prefix from it.
 */
#include <windows.h>

#include <vok/companion.h>
#include <winspool.h>

#include <cstring>

namespace {

constexpr LONG page_width = 2100;  // Tenths of millimetres.
constexpr LONG page_length = 2970;

DEVMODEW defaults(const wchar_t* printer) {
    DEVMODEW mode{};
    lstrcpynW(mode.dmDeviceName, printer, CCHDEVICENAME);
    mode.dmSpecVersion = DM_SPECVERSION;
    mode.dmDriverVersion = 1;
    mode.dmSize = sizeof mode;
    mode.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_COPIES;
    mode.dmOrientation = DMORIENT_PORTRAIT;
    mode.dmPaperSize = DMPAPER_A4;
    mode.dmCopies = 1;
    return mode;
}

/// What the spooler passes to DrvDocumentPropertySheets when no pages are wanted.
struct DocumentPropertyHeader {
    WORD cbSize;
    WORD Reserved;
    HANDLE hPrinter;
    LPWSTR pszPrinterName;
    DEVMODEW* pdmIn;
    DEVMODEW* pdmOut;
    DWORD cbOut;
    DWORD fMode;
};

// The event of DrvPrinterEvent that asks for a new printer's data.
constexpr int printer_made = 3;

/// Writes the printer data by which the library finds the model.
bool setPrefix(wchar_t* printer) {
    PRINTER_DEFAULTSW access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE handle = nullptr;
    if (OpenPrinterW(printer, &handle, &access) == 0)
        return false;
    char name[] = VOK_PRINTER_PREFIX_VALUE;
    char prefix[] = VOK_MODEL_PREFIX;
    const DWORD error =
        SetPrinterDataA(handle, name, REG_SZ, reinterpret_cast<BYTE*>(prefix), sizeof prefix);
    ClosePrinter(handle);
    SetLastError(error);
    return error == ERROR_SUCCESS;
}

}  // namespace

extern "C" __declspec(dllexport) BOOL WINAPI DrvPrinterEvent(LPWSTR printer, int event,
                                                             DWORD /*flags*/, LPARAM /*data*/) {
    if (event != printer_made)
        return TRUE;
    return setPrefix(printer) ? TRUE : FALSE;
}

extern "C" __declspec(dllexport) LONG WINAPI DrvDocumentPropertySheets(void* /*propertySheets*/,
                                                                       LPARAM parameter) {
    auto* header = reinterpret_cast<DocumentPropertyHeader*>(parameter);
    if (header == nullptr)
        return -1;
    header->cbOut = sizeof(DEVMODEW);
    if (header->pdmOut == nullptr || header->fMode == 0)
        return sizeof(DEVMODEW);
    const wchar_t* printer = header->pszPrinterName != nullptr ? header->pszPrinterName : L"";
    DEVMODEW mode = defaults(printer);
    if (header->pdmIn != nullptr && header->pdmIn->dmSize == sizeof mode)
        mode = *header->pdmIn;
    std::memcpy(header->pdmOut, &mode, sizeof mode);
    return 1;
}

extern "C" __declspec(dllexport) DWORD WINAPI DrvDeviceCapabilities(HANDLE /*printer*/,
                                                                    PWSTR /*deviceName*/,
                                                                    WORD capability, void* output,
                                                                    const DEVMODEW* /*mode*/) {
    switch (capability) {
        case DC_SIZE:
            return sizeof(DEVMODEW);
        case DC_COPIES:
        case DC_VERSION:
        case DC_DRIVER:
            return 1;
        case DC_PAPERS:
            if (output != nullptr)
                *static_cast<WORD*>(output) = DMPAPER_A4;
            return 1;
        case DC_PAPERSIZE:
            if (output != nullptr)
                *static_cast<POINT*>(output) = POINT{page_width, page_length};
            return 1;
        default:
            return 0;
    }
}
