#include "spooler.h"

#include <winspool.h>

#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "call.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

BOOL WINAPI openPrinterA(LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) {
    Call call("OpenPrinterA", static_cast<const char*>(name), Out{handle}, Out{defaults});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    System& system = call.system();
    Printer* printer = system.spooler.find(name ? name : "");
    if (!printer) {
        return call.done(FALSE, DWORD{ERROR_INVALID_PRINTER_NAME});
    }
    ++printer->openings;
    *handle = system.handles.open(Kind::printer, std::make_shared<std::string>(printer->name));
    return call.done(TRUE, handleName(*handle));
}

BOOL WINAPI closePrinter(HANDLE handle) {
    Call call("ClosePrinter", handle);
    const bool closed = call.system().closeHandle(call, handle, Kind::printer);
    return call.fails() ? call.failed<BOOL>()
           : closed     ? call.done(TRUE)
                        : call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
}

DWORD WINAPI getPrinterDataA(HANDLE handle, LPSTR name, LPDWORD type, LPBYTE data, DWORD size,
                             LPDWORD needed) {
    Call call("GetPrinterDataA", handle, static_cast<const char*>(name), Out{type}, Out{data}, size,
              Out{needed});
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    System& system = call.system();
    const auto* printerName = system.handles.get<std::string>(handle, Kind::printer);
    if (!printerName) {
        return call.done(DWORD{ERROR_INVALID_HANDLE});
    }
    const Printer* printer = system.spooler.find(*printerName);
    const auto it = printer->data.find(name);
    if (it == printer->data.end()) {
        return call.done(DWORD{ERROR_FILE_NOT_FOUND});
    }
    const RegistryValue& value = it->second;
    if (type) {
        *type = value.type;
    }
    *needed = static_cast<DWORD>(value.data.size());
    if (*needed > size) {
        return call.done(DWORD{ERROR_MORE_DATA});
    }
    system.fillGreedily(data, size);
    std::memcpy(data, value.data.data(), value.data.size());
    return call.done(DWORD{ERROR_SUCCESS}, describe(value.data.c_str()));
}

BOOL WINAPI getPrinterDriverDirectoryA(LPSTR server, LPSTR environment, DWORD level, LPBYTE data,
                                       DWORD size, LPDWORD needed) {
    Call call("GetPrinterDriverDirectoryA", static_cast<const char*>(server),
              static_cast<const char*>(environment), level, Out{data}, size, Out{needed});
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    System& system = call.system();
    if (system.spooler.driverDirectoryError) {
        *needed = 0;
        return call.done(FALSE, *system.spooler.driverDirectoryError);
    }
    const std::string& directory = system.spooler.driverDirectory;
    *needed = static_cast<DWORD>(directory.size() + 1);
    if (*needed > size) {
        return call.done(FALSE, DWORD{ERROR_INSUFFICIENT_BUFFER});
    }
    system.fillGreedily(data, size);
    std::memcpy(data, directory.c_str(), *needed);
    return call.done(TRUE, describe(directory.c_str()));
}

}  // namespace

Printer& Spooler::add(const std::string& name) {
    Printer& printer = printers_[name];
    printer.name = name;
    return printer;
}

Printer* Spooler::find(const std::string& name) {
    const auto it = printers_.find(name);
    return it == printers_.end() ? nullptr : &it->second;
}

void Spooler::setData(const std::string& printer, const std::string& value, RegistryValue data) {
    add(printer).data[value] = std::move(data);
}

std::span<const Substitute> spoolerSubstitutes() {
    static const Substitute all[] = {
        substitute("OpenPrinterA", openPrinterA),
        substitute("ClosePrinter", closePrinter),
        substitute("GetPrinterDataA", getPrinterDataA),
        substitute("GetPrinterDriverDirectoryA", getPrinterDriverDirectoryA),
    };
    return all;
}

}  // namespace vok::test
