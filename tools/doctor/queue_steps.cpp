// The jobs that wait in a printer's queue.

#include <windows.h>

#include <winspool.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/system_text.h"
#include "examination.h"

namespace vok::doctor {

namespace {

constexpr const char* step = "queue";
constexpr std::uint64_t longMinutes = 10;

// What keeps a job in the queue by the spooler's own word; empty when nothing does.
std::string whatHolds(DWORD status) {
    const struct {
        DWORD bit;
        const char* text;
    } states[] = {{JOB_STATUS_PAUSED, "paused"},
                  {JOB_STATUS_ERROR, "in error"},
                  {JOB_STATUS_OFFLINE, "the printer is offline"},
                  {JOB_STATUS_PAPEROUT, "out of paper"},
                  {JOB_STATUS_BLOCKED_DEVQ, "the driver can't print it"},
                  {JOB_STATUS_USER_INTERVENTION, "somebody has to see to the printer"}};
    std::string text;
    for (const auto& state : states) {
        if ((status & state.bit) != 0) {
            text += (text.empty() ? "" : ", ") + std::string(state.text);
        }
    }
    return text;
}

std::uint64_t ticks(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

std::uint64_t minutesSince(const SYSTEMTIME& then) {
    constexpr std::uint64_t ticksAMinute = 600000000;
    FILETIME began = {};
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    if (SystemTimeToFileTime(&then, &began) == 0 || ticks(began) > ticks(now)) {
        return 0;
    }
    return (ticks(now) - ticks(began)) / ticksAMinute;
}

void examineJob(Examination& examination, const Printer& printer, const JOB_INFO_1A& job) {
    const std::string held = whatHolds(job.Status);
    const std::uint64_t minutes = minutesSince(job.Submitted);
    const std::string text = printer.name + ": job " + std::to_string(job.JobId) +
                             ", in the queue for " + std::to_string(minutes) + " min";
    if (!held.empty()) {
        examination.report.problem(step, Trouble::JobStuck, text + ": " + held);
    } else if (minutes >= longMinutes) {
        examination.report.warn(step, Trouble::JobStuck, text);
    } else {
        examination.report.ok(step, text);
    }
}

}  // namespace

void examineQueue(Examination& examination, const Printer& printer) {
    std::string name = printer.name;
    HANDLE handle = nullptr;
    if (printer.jobs == 0 || OpenPrinterA(name.data(), &handle, nullptr) == 0) {
        return;
    }
    DWORD needed = 0;
    DWORD count = 0;
    EnumJobsA(handle, 0, printer.jobs, 1, nullptr, 0, &needed, &count);
    std::vector<BYTE> buffer(needed);
    if (EnumJobsA(handle, 0, printer.jobs, 1, buffer.data(), needed, &needed, &count) != 0) {
        const auto* jobs = reinterpret_cast<const JOB_INFO_1A*>(buffer.data());
        for (DWORD index = 0; index < count; ++index) {
            examineJob(examination, printer, jobs[index]);
        }
    } else {
        const DWORD error = GetLastError();
        examination.report.warn(
            step, Trouble::JobStuck,
            printer.name + ": " + std::to_string(printer.jobs) +
                " jobs, which the spooler does not list: " + tools::errorText(error));
    }
    ClosePrinter(handle);
}

}  // namespace vok::doctor
