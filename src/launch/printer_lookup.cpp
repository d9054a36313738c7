#include "launch/printer_lookup.h"

#include <vok/companion.h>
#include <winspool.h>

#include <cstring>
#include <string>

#include "logging/log_line.h"
#include "support/library_module.h"
#include "support/os_family.h"
#include "support/text.h"

namespace vok {

namespace {

const char* versionDirectory(OsFamily family) {
    switch (family) {
        case family9x:
            return "\\";
        case familyNT4:
            return "\\2\\";
        default:
            return "\\3\\";
    }
}

}  // namespace

int GetModuleNamePrefix(char* destination) {
    if (libraryModule() == nullptr || destination == nullptr) {
        return 0;
    }
    NameBuffer path;
    if (GetModuleFileNameA(libraryModule(), path.data(), NameBuffer::size) == 0) {
        return 0;
    }
    path.terminate();
    logLine({"The module name = ", path.text()});
    const char* name = path.text();
    const char* backslash = std::strrchr(name, '\\');
    if (backslash != nullptr) {
        logLine({"Got The File Name! File Name = ", toString(backslash)});
        name = backslash + 1;
    } else {
        logLine("Did NOT get File Name");
    }
    // strncpy in three calls: compilers warn of one that leaves no NUL, which is meant here.
    const std::size_t length = strnlen(name, VOK_MODEL_PREFIX_LENGTH);
    std::memset(destination, 0, VOK_MODEL_PREFIX_LENGTH);
    std::memcpy(destination, name, length);
    return 1;
}

NameBuffer modelPrefix() {
    char prefix[VOK_MODEL_PREFIX_LENGTH + 1] = {};
    GetModuleNamePrefix(prefix);
    return NameBuffer(prefix);
}

int GetNembWindowNames(const char* printerName, NameBuffer* className, std::string* title) {
    if (className == nullptr || title == nullptr) {
        return 0;
    }
    HANDLE printer = nullptr;
    OpenPrinterA(const_cast<char*>(printerName), &printer, nullptr);
    char value[] = VOK_PRINTER_PREFIX_VALUE;
    DWORD needed = 0;
    const DWORD status =
        GetPrinterDataA(printer, value, nullptr, reinterpret_cast<BYTE*>(className->data()),
                        NameBuffer::size, &needed);
    className->terminate();
    if (status != ERROR_SUCCESS) {
        return 0;
    }
    *className << VOK_NEMB_TITLE;
    *title = toString(className->text()) + toString(printerName);
    return 1;
}

int GetPrinterDriverDir(char* buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    DWORD needed = 0;
    buffer[0] = '\0';
    GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(buffer), size, &needed);
    if (needed > size) {
        return 0;
    }
    buffer[size - 1] = '\0';
    const std::size_t used = std::strlen(buffer);
    std::strncpy(buffer + used, versionDirectory(GetOsFamily()), size - 1 - used);
    return 1;
}

PrinterHold::PrinterHold(const char* friendlyName)
    : opened_(OpenPrinterA(const_cast<char*>(friendlyName), &printer_, nullptr) != 0) {
    if (!opened_) {
        logLine("Could not open the Printer. Exiting now...");
    }
}

PrinterHold::~PrinterHold() {
    if (opened_ && !keepOpen_) {
        ClosePrinter(printer_);
    }
}

}  // namespace vok
