// The program that loads this sees one job in every queue: MINUTES old, of the status STATUS.
#include <windows.h>

#include <winspool.h>

#include <bit>

#include "common/import_table.h"

namespace {

BOOL WINAPI oneJobMore(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed) {
    const BOOL done = GetPrinterA(printer, level, buffer, size, needed);
    if (done != 0 && level == 2) {
        reinterpret_cast<PRINTER_INFO_2A*>(buffer)->cJobs = 1;
    }
    return done;
}

SYSTEMTIME minutesAgo(ULONGLONG minutes) {
    constexpr ULONGLONG ticksAMinute = 600000000;
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    auto ticks = std::bit_cast<ULONGLONG>(now);
    ticks -= minutes * ticksAMinute;
    SYSTEMTIME then = {};
    const auto time = std::bit_cast<FILETIME>(ticks);
    FileTimeToSystemTime(&time, &then);
    return then;
}

BOOL WINAPI jobs(HANDLE /*printer*/, DWORD /*first*/, DWORD /*count*/, DWORD /*level*/,
                 BYTE* buffer, DWORD size, DWORD* needed, DWORD* returned) {
    *needed = sizeof(JOB_INFO_1A);
    *returned = 0;
    if (size < *needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    JOB_INFO_1A job = {};
    job.JobId = 7;
    job.Status = STATUS;
    job.Submitted = minutesAgo(MINUTES);
    *reinterpret_cast<JOB_INFO_1A*>(buffer) = job;
    *returned = 1;
    return TRUE;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    const HMODULE program = GetModuleHandleA(nullptr);
    return vok::sample::replaceImport(program, "GetPrinterA",
                                      std::bit_cast<FARPROC>(&oneJobMore)) &&
                   vok::sample::replaceImport(program, "EnumJobsA", std::bit_cast<FARPROC>(&jobs))
               ? TRUE
               : FALSE;
}
