#include "spooler.h"

#include <vok/companion.h>
#include <winspool.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "common/machine.h"
#include "common/options.h"
#include "files.h"

namespace vok::sample {
namespace {

// The spooler's functions take these as writable text and don't write.
char processor_name[] = VOK_MODEL_PREFIX "proc";
char driver_name[] = "Demo Printer Driver";
char environment[] = "Windows x64";
char datatype[] = "RAW";
char empty[] = "";

bool report(const char* what, const std::string& name, bool done, DWORD error) {
    if (done)
        std::printf("%-15s %s\n", what, name.c_str());
    else
        complain(withError(std::string(what) + " '" + name + "' failed", error));
    return done;
}

std::string processorDirectory() {
    std::array<char, MAX_PATH> directory{};
    DWORD needed = 0;
    if (GetPrintProcessorDirectoryA(nullptr, environment, 1,
                                    reinterpret_cast<BYTE*>(directory.data()),
                                    static_cast<DWORD>(directory.size()), &needed) == 0)
        return {};
    return directory.data();
}

/// Has a port added or deleted by the monitor of the local ports. The result is an error code.
DWORD callPortMonitor(const wchar_t* command, const std::string& port) {
    char monitor[] = ",XcvMonitor Local Port";
    PRINTER_DEFAULTSA access{nullptr, nullptr, SERVER_ACCESS_ADMINISTER};
    HANDLE handle = nullptr;
    if (OpenPrinterA(monitor, &handle, &access) == 0)
        return GetLastError();
    std::vector<wchar_t> name(port.size() + 1);
    MultiByteToWideChar(CP_ACP, 0, port.c_str(), -1, name.data(), static_cast<int>(name.size()));
    DWORD needed = 0;
    DWORD status = ERROR_SUCCESS;
    if (XcvDataW(handle, command, reinterpret_cast<BYTE*>(name.data()),
                 static_cast<DWORD>(name.size() * sizeof(wchar_t)), nullptr, 0, &needed,
                 &status) == 0)
        status = GetLastError();
    ClosePrinter(handle);
    return status;
}

/// The printer's model prefix, where the library looks for it.
DWORD setPrefix(HANDLE printer) {
    char name[] = VOK_PRINTER_PREFIX_VALUE;
    char prefix[] = VOK_MODEL_PREFIX;
    return SetPrinterDataA(printer, name, REG_SZ, reinterpret_cast<BYTE*>(prefix), sizeof prefix);
}

}  // namespace

bool addPrintProcessor(const std::string& source) {
    const std::string directory = processorDirectory();
    if (directory.empty())
        return report("processor folder", "", false, GetLastError());
    if (!copyFile(processor_file, source, directory))
        return false;
    std::string file = processor_file;
    const bool done = AddPrintProcessorA(nullptr, environment, file.data(), processor_name) != 0;
    const DWORD error = GetLastError();
    return report("print processor", processor_name,
                  done || error == ERROR_PRINT_PROCESSOR_ALREADY_INSTALLED, error);
}

bool addPort(const std::string& port) {
    const DWORD error = callPortMonitor(L"AddPort", port);
    return report("port", port, error == ERROR_SUCCESS || error == ERROR_ALREADY_EXISTS, error);
}

bool addDriver(const std::string& source) {
    std::string ui = source + "\\" + driver_ui_file;
    DRIVER_INFO_3A info{};
    info.cVersion = 3;
    info.pName = driver_name;
    info.pEnvironment = environment;
    info.pDriverPath = ui.data();
    info.pDataFile = ui.data();
    info.pConfigFile = ui.data();
    info.pDefaultDataType = datatype;
    const bool done = AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&info),
                                          APD_COPY_ALL_FILES | APD_COPY_FROM_DIRECTORY) != 0;
    const DWORD error = GetLastError();
    return report("driver", driver_name, done || error == ERROR_PRINTER_DRIVER_ALREADY_INSTALLED,
                  error);
}

bool addPrinter(const std::string& printer, const std::string& port, const std::string& driver) {
    std::string name = printer;
    std::string portName = port;
    std::string driverName = driver.empty() ? driver_name : driver;
    PRINTER_INFO_2A info{};
    info.pPrinterName = name.data();
    info.pPortName = portName.data();
    info.pDriverName = driverName.data();
    info.pPrintProcessor = processor_name;
    info.pDatatype = datatype;
    info.pShareName = empty;
    info.pComment = empty;
    info.pLocation = empty;
    HANDLE handle = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    DWORD error = GetLastError();
    if (handle == nullptr && error == ERROR_PRINTER_ALREADY_EXISTS &&
        OpenPrinterA(name.data(), &handle, nullptr) == 0)
        error = GetLastError();
    if (handle == nullptr)
        return report("printer", printer, false, error);
    error = setPrefix(handle);
    ClosePrinter(handle);
    return report("printer", printer, true, 0) &&
           report("printer data", VOK_PRINTER_PREFIX_VALUE " = " VOK_MODEL_PREFIX,
                  error == ERROR_SUCCESS, error);
}

bool deletePrinter(const std::string& printer) {
    std::string name = printer;
    PRINTER_DEFAULTSA access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE handle = nullptr;
    if (OpenPrinterA(name.data(), &handle, &access) == 0) {
        const DWORD error = GetLastError();
        return report("no printer", printer, error == ERROR_INVALID_PRINTER_NAME, error);
    }
    const bool done = DeletePrinter(handle) != 0;
    const DWORD error = GetLastError();
    ClosePrinter(handle);
    return report("printer off", printer, done, error);
}

bool deleteDriver() {
    const bool done = DeletePrinterDriverA(nullptr, environment, driver_name) != 0;
    const DWORD error = GetLastError();
    return report("driver off", driver_name, done || error == ERROR_UNKNOWN_PRINTER_DRIVER,
                  error) &&
           deleteFile(driverDirectory() + "\\" + driver_ui_file);
}

bool deletePort(const std::string& port) {
    // LPT1: and its like are the system's: they were there before.
    if (port.find(":\\") == std::string::npos)
        return report("port left", port, true, 0);
    const DWORD error = callPortMonitor(L"DeletePort", port);
    return report("port off", port, error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND, error);
}

bool deletePrintProcessor() {
    const bool done = DeletePrintProcessorA(nullptr, environment, processor_name) != 0;
    const DWORD error = GetLastError();
    return report("processor off", processor_name, done || error == ERROR_UNKNOWN_PRINTPROCESSOR,
                  error) &&
           deleteFile(processorDirectory() + "\\" + processor_file);
}

bool findDriver(const std::string& driver) {
    DWORD needed = 0;
    DWORD count = 0;
    EnumPrinterDriversA(nullptr, environment, 1, nullptr, 0, &needed, &count);
    std::vector<BYTE> buffer(needed + sizeof(DRIVER_INFO_1A));
    if (EnumPrinterDriversA(nullptr, environment, 1, buffer.data(),
                            static_cast<DWORD>(buffer.size()), &needed, &count) == 0) {
        complain(withError("the spooler does not tell its drivers", GetLastError()));
        return false;
    }
    const auto* drivers = reinterpret_cast<const DRIVER_INFO_1A*>(buffer.data());
    const bool found = std::any_of(drivers, drivers + count, [&](const DRIVER_INFO_1A& info) {
        return lstrcmpiA(info.pName, driver.c_str()) == 0;
    });
    if (!found)
        complain("the driver '" + driver + "' is not installed");
    return found;
}

std::optional<std::string> portOfPrinter(const std::string& printer) {
    std::string name = printer;
    HANDLE handle = nullptr;
    if (OpenPrinterA(name.data(), &handle, nullptr) == 0)
        return std::nullopt;
    DWORD needed = 0;
    GetPrinterA(handle, 2, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed + sizeof(PRINTER_INFO_2A));
    std::string port;
    if (GetPrinterA(handle, 2, buffer.data(), static_cast<DWORD>(buffer.size()), &needed) != 0) {
        const auto* info = reinterpret_cast<const PRINTER_INFO_2A*>(buffer.data());
        port = info->pPortName != nullptr ? info->pPortName : "";
    }
    ClosePrinter(handle);
    return port;
}

}  // namespace vok::sample
