#include "spooler_job.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "common/machine.h"
#include "common/trace.h"
#include "job/vok_library.h"

namespace vok::sample {
namespace {

std::wstring orEmpty(const wchar_t* text) {
    return text != nullptr ? text : L"";
}

std::string narrow(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

}  // namespace

SpoolerJob::~SpoolerJob() {
    if (running_ != nullptr)
        CloseHandle(running_);
}

DWORD SpoolerJob::open(const std::wstring& portName, const OpenData& data) {
    printerName_ = orEmpty(data.printerName);
    title_ = orEmpty(data.documentName);
    datatype_ = orEmpty(data.datatype);
    outputFile_ = orEmpty(data.outputFile);
    id_ = data.jobId;
    running_ = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    if (running_ == nullptr || !port_.open(portName) || !printer_.open(printerName_))
        return GetLastError();
    return ERROR_SUCCESS;
}

DWORD SpoolerJob::print(const std::wstring& documentName) {
    if (!document_.open(documentName))
        return GetLastError();
    VokLibrary library;
    const DWORD error = library.load(driverDirectory(), modelPrefix());
    if (error != ERROR_SUCCESS) {
        say(withError("can't load " + library.path(), error));
        return error;
    }
    const JobTicket ticket{narrow(printerName_), portOfPrinter(), narrow(title_), id_};
    const JobLimits limits;
    const JobEnd end = JobDriver(library.calls(), *this, ticket, limits).run();
    if (outputBegun_)
        EndDocPrinter(port_.get());
    if (end == JobEnd::Refused)
        dropJob();
    return end == JobEnd::Failed ? ERROR_WRITE_FAULT : ERROR_SUCCESS;
}

bool SpoolerJob::control(DWORD command) {
    switch (command) {
        case JOB_CONTROL_PAUSE:
            ResetEvent(running_);
            return true;
        case JOB_CONTROL_RESUME:
            SetEvent(running_);
            return true;
        case JOB_CONTROL_CANCEL:
            InterlockedExchange(&aborted_, 1);
            SetEvent(running_);
            return true;
        default:
            return false;
    }
}

bool SpoolerJob::read(char* buffer, DWORD size, DWORD& count) {
    WaitForSingleObject(running_, INFINITE);
    count = 0;
    if (ReadPrinter(document_.get(), buffer, size, &count) != 0)
        return true;
    say(withError("the document can't be read", GetLastError()));
    return false;
}

bool SpoolerJob::openPort() {
    DOC_INFO_1W info{};
    info.pDocName = title_.data();
    info.pOutputFile = outputFile_.empty() ? nullptr : outputFile_.data();
    info.pDatatype = datatype_.data();
    outputBegun_ = StartDocPrinterW(port_.get(), 1, reinterpret_cast<BYTE*>(&info)) != 0;
    if (!outputBegun_)
        say(withError("the port can't be opened", GetLastError()));
    return outputBegun_;
}

bool SpoolerJob::write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WritePrinter(port_.get(), const_cast<char*>(bytes.data()),
                         static_cast<DWORD>(bytes.size()), &written) == 0 ||
            written == 0) {
            say(withError("the port can't be written", GetLastError()));
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

bool SpoolerJob::cancelled() {
    return aborted_ != 0 || deletedInSpooler();
}

void SpoolerJob::pause(DWORD milliseconds) {
    Sleep(milliseconds);
}

DWORD SpoolerJob::ticks() {
    return GetTickCount();
}

void SpoolerJob::say(const std::string& text) {
    trace("processor", text);
}

std::string SpoolerJob::modelPrefix() const {
    std::array<char, VOK_NAME_SIZE> prefix{};
    char name[] = VOK_PRINTER_PREFIX_VALUE;
    DWORD type = REG_NONE;
    DWORD needed = 0;
    const DWORD status =
        GetPrinterDataA(printer_.get(), name, &type, reinterpret_cast<BYTE*>(prefix.data()),
                        static_cast<DWORD>(prefix.size() - 1), &needed);
    return status == ERROR_SUCCESS && type == REG_SZ ? prefix.data() : VOK_MODEL_PREFIX;
}

std::string SpoolerJob::portOfPrinter() const {
    DWORD needed = 0;
    GetPrinterA(printer_.get(), 2, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed + sizeof(PRINTER_INFO_2A));
    const DWORD size = static_cast<DWORD>(buffer.size());
    if (GetPrinterA(printer_.get(), 2, buffer.data(), size, &needed) == 0)
        return {};
    const auto* info = reinterpret_cast<const PRINTER_INFO_2A*>(buffer.data());
    return info->pPortName != nullptr ? info->pPortName : "";
}

bool SpoolerJob::deletedInSpooler() const {
    DWORD needed = 0;
    GetJobA(printer_.get(), id_, 1, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed + sizeof(JOB_INFO_1A));
    const DWORD size = static_cast<DWORD>(buffer.size());
    if (GetJobA(printer_.get(), id_, 1, buffer.data(), size, &needed) == 0)
        return false;
    const auto* info = reinterpret_cast<const JOB_INFO_1A*>(buffer.data());
    return (info->Status & (JOB_STATUS_DELETING | JOB_STATUS_DELETED)) != 0;
}

/// A refused job must not stay in the queue. Where the spooler has taken it out already, as some
/// do before they process it, there is nothing to delete.
void SpoolerJob::dropJob() {
    if (SetJobW(printer_.get(), id_, 0, nullptr, JOB_CONTROL_DELETE) == 0 &&
        GetLastError() != ERROR_INVALID_PARAMETER)
        say(withError("the refused job can't be deleted", GetLastError()));
}

}  // namespace vok::sample
