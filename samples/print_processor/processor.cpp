/**
 * @file processor.cpp
 * The print processor "DEMOproc": the functions that the spooler calls.
 */
#include <memory>
#include <new>

#include "spooler_job.h"

namespace {

using vok::sample::OpenData;
using vok::sample::SpoolerJob;

constexpr const wchar_t* datatypes[] = {L"RAW", L"TEXT"};
constexpr DWORD datatype_count = sizeof datatypes / sizeof datatypes[0];

bool isOurs(const wchar_t* datatype) {
    for (const wchar_t* ours : datatypes) {
        if (lstrcmpiW(datatype, ours) == 0)
            return true;
    }
    return false;
}

BOOL answer(DWORD error) {
    if (error != ERROR_SUCCESS)
        SetLastError(error);
    return error == ERROR_SUCCESS;
}

/// What the spooler asks for. Exhausted memory is an error of that alone: no exception may reach
/// the spooler, which would end with all its jobs.
template <typename Function>
DWORD errorOf(Function function) {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

SpoolerJob* jobOf(HANDLE processor) {
    return static_cast<SpoolerJob*>(processor);
}

}  // namespace

extern "C" {

BOOL WINAPI EnumPrintProcessorDatatypesW(wchar_t* /*server*/, wchar_t* /*processor*/, DWORD level,
                                         BYTE* buffer, DWORD size, DWORD* needed, DWORD* returned) {
    if (needed == nullptr || returned == nullptr)
        return answer(ERROR_INVALID_PARAMETER);
    *needed = 0;
    *returned = 0;
    if (level != 1)
        return answer(ERROR_INVALID_LEVEL);
    DWORD bytes = datatype_count * sizeof(DATATYPES_INFO_1W);
    for (const wchar_t* name : datatypes)
        bytes += static_cast<DWORD>((lstrlenW(name) + 1) * static_cast<int>(sizeof(wchar_t)));
    *needed = bytes;
    if (buffer == nullptr || size < bytes)
        return answer(ERROR_INSUFFICIENT_BUFFER);
    auto* info = reinterpret_cast<DATATYPES_INFO_1W*>(buffer);
    auto* text = reinterpret_cast<wchar_t*>(info + datatype_count);
    for (const wchar_t* name : datatypes) {
        info->pName = text;
        ++info;
        lstrcpyW(text, name);
        text += lstrlenW(name) + 1;
    }
    *returned = datatype_count;
    return TRUE;
}

HANDLE WINAPI OpenPrintProcessor(wchar_t* portName, OpenData* data) {
    if (portName == nullptr || data == nullptr || data->datatype == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!isOurs(data->datatype)) {
        SetLastError(ERROR_INVALID_DATATYPE);
        return nullptr;
    }
    std::unique_ptr<SpoolerJob> job;
    const DWORD error = errorOf([&] {
        job = std::make_unique<SpoolerJob>();
        return job->open(portName, *data);
    });
    if (error != ERROR_SUCCESS) {
        job.reset();
        SetLastError(error);
    }
    return job.release();
}

BOOL WINAPI PrintDocumentOnPrintProcessor(HANDLE processor, wchar_t* documentName) {
    if (processor == nullptr || documentName == nullptr)
        return answer(ERROR_INVALID_PARAMETER);
    return answer(errorOf([&] { return jobOf(processor)->print(documentName); }));
}

BOOL WINAPI ControlPrintProcessor(HANDLE processor, DWORD command) {
    if (processor == nullptr || !jobOf(processor)->control(command))
        return answer(ERROR_INVALID_PARAMETER);
    return TRUE;
}

BOOL WINAPI ClosePrintProcessor(HANDLE processor) {
    if (processor == nullptr)
        return answer(ERROR_INVALID_HANDLE);
    delete jobOf(processor);
    return TRUE;
}

}  // extern "C"
