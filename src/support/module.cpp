#include "support/module.h"

#include <cstdint>
#include <string>

#include "logging/log_line.h"
#include "support/name_buffer.h"
#include "support/os_version.h"
#include "support/text.h"

namespace vok {

namespace {

// The first four characters of a file name of eight and three, counted from the end of the path.
std::string hostPrefix() {
    if (GetModuleHandleA(nullptr) == nullptr) {
        return {};
    }
    NameBuffer buffer;
    GetModuleFileNameA(nullptr, buffer.data(), NameBuffer::size);
    buffer.terminate();
    const std::string path = buffer.text();
    constexpr std::size_t fromEnd = 12;
    return path.size() < fromEnd ? std::string() : path.substr(path.size() - fromEnd, 4);
}

const char* versionDirectory(OsVersion::Code version) {
    switch (version) {
        case OsVersion::Win95:
        case OsVersion::Win98:
        case OsVersion::WinMe:
            return "\\";
        case OsVersion::WinNT4:
            return "\\2\\";
        default:
            return "\\3\\";
    }
}

}  // namespace

Module::Module(const std::string& fileName, std::uint32_t withHostPrefix) {
    std::uint32_t ignored = 0;
    readPrinterPath(printerPath_, ignored);
    if (withHostPrefix != 0) {
        namePrefix_ = hostPrefix();
    }
    fileName_ = fileName;
}

Module::~Module() {
    try {
        UnLoad();
    } catch (...) {
        // Memory ran out while the failure was being logged: only the line is lost.
        return;
    }
}

std::uint32_t Module::Load() {
    if (handle_ != nullptr) {
        return 0;
    }
    DWORD error = 0;
    handle_ = LoadLibraryA((namePrefix_ + fileName_).c_str());
    if (handle_ == nullptr) {
        const std::string path = std::string(printerPath_) + namePrefix_ + fileName_;
        handle_ = LoadLibraryA(path.c_str());
        if (handle_ == nullptr) {
            error = GetLastError();
            logLine({"Failed to Loadlibrary, path= ", path, "ret=", toString(error, 10)});
        }
    }
    return error;
}

std::uint32_t Module::UnLoad() {
    if (handle_ == nullptr || FreeLibrary(handle_) != 0) {
        return 0;
    }
    const DWORD error = GetLastError();
    logLine({"Module::UnLoad() | Failed to Unloadlibrary, path = ", printerPath_, namePrefix_,
             fileName_, "ret=", toString(error, 10)});
    return error;
}

FARPROC Module::getProcAddress(const char* name) const {
    return handle_ == nullptr || name == nullptr ? nullptr : GetProcAddress(handle_, name);
}

std::uint32_t Module::GetPrinterPath(std::string& out) {
    PrinterPath path;
    std::uint32_t error = 0;
    if (readPrinterPath(path, error)) {
        out = path;
    }
    return error;
}

bool Module::readPrinterPath(PrinterPath& out, std::uint32_t& error) {
    NameBuffer directory;
    DWORD needed = 0;
    if (GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(directory.data()),
                                   NameBuffer::size, &needed) == 0) {
        const DWORD lastError = GetLastError();
        logLine({"Module::GetPrinterDriverDirectory() fails, ret = ", toString(lastError, 10)});
        error = lastError;
        return false;
    }
    directory.terminate();
    out.append(directory.text()).append(versionDirectory(OsVersion::getInstance().getVersion()));
    logLine({"Module::GetPrinterPath(), ", out});
    return true;
}

}  // namespace vok
