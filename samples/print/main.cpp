/**
 * @file main.cpp
 * vok-print FILE [--printer NAME] [--route message|pipe] [--title TEXT] [--job NUMBER]
 *           [--compare PORT_FILE]
 *
 * Prints a file, byte for byte, through the spooler; the document bears the file's name, or TEXT.
 * With PORT_FILE, the file that the printer prints to, it waits until the job is out of the queue
 * and compares what is in there with what was printed. Under Wine the spooler works inside this
 * very process, and the user and the spooler share one session: the pipe route is then had by
 * telling the library that the spooler is in session 0. That spooler numbers the jobs of each
 * process from 1; with NUMBER it gives away the numbers below, so that several jobs can be told
 * apart. Exit status: 0 the spooler took the whole document (and it came out the same), 1 it did
 * not, 2 misused or no such file or printer.
 */
#include <windows.h>
#include <winspool.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "common/file.h"
#include "common/machine.h"
#include "common/options.h"
#include "common/other_session.h"
#include "job/vok_library.h"

namespace vok::sample {
namespace {

bool fail(const char* what) {
    complain(withError(what, GetLastError()));
    return false;
}

bool writeAll(HANDLE printer, std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        DWORD written = 0;
        if (WritePrinter(printer, bytes.data() + done, static_cast<DWORD>(bytes.size() - done),
                         &written) == 0 ||
            written == 0)
            return fail("WritePrinter");
        done += written;
    }
    return true;
}

// The title by value, because the system's structure wants its text writable.
// cppcheck-suppress passedByValue
bool printBytes(HANDLE printer, std::string title, std::string& bytes, DWORD& job) {
    char datatype[] = "RAW";
    DOC_INFO_1A info{title.data(), nullptr, datatype};
    job = StartDocPrinterA(printer, 1, reinterpret_cast<BYTE*>(&info));
    if (job == 0)
        return fail("StartDocPrinter");
    if (!writeAll(printer, bytes)) {
        AbortPrinter(printer);
        return false;
    }
    if (EndDocPrinter(printer) == 0)
        return fail("EndDocPrinter");
    std::printf("job %lu, %lu bytes, given to the spooler\n", job,
                static_cast<unsigned long>(bytes.size()));
    return true;
}

/// The state of a job, or nothing when the queue has it no more.
std::optional<DWORD> stateOfJob(HANDLE printer, DWORD job) {
    DWORD needed = 0;
    GetJobA(printer, job, 1, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed + sizeof(JOB_INFO_1A));
    if (GetJobA(printer, job, 1, buffer.data(), static_cast<DWORD>(buffer.size()), &needed) == 0)
        return std::nullopt;
    return reinterpret_cast<const JOB_INFO_1A*>(buffer.data())->Status;
}

/// Where the spooler is a service, it prints when the document has been given to it.
bool waitForEnd(HANDLE printer, DWORD job) {
    constexpr DWORD longest_wait = 300'000;
    constexpr DWORD ended = JOB_STATUS_PRINTED | JOB_STATUS_COMPLETE;
    const ULONGLONG start = GetTickCount64();
    while (const auto state = stateOfJob(printer, job)) {
        if ((*state & ended) != 0)
            return true;
        if (GetTickCount64() - start > longest_wait) {
            complain("job " + std::to_string(job) + " is still in the queue, its status " +
                     std::to_string(*state));
            return false;
        }
        Sleep(100);
    }
    return true;
}

bool compare(const std::string& port, const std::string& bytes) {
    const std::optional<std::string> printed = readFile(port);
    if (!printed)
        return false;
    if (*printed != bytes) {
        complain(port + " has " + std::to_string(printed->size()) +
                 " bytes and is not the document, which has " + std::to_string(bytes.size()));
        return false;
    }
    std::printf("%s has %lu bytes, equal to the document\n", port.c_str(),
                static_cast<unsigned long>(bytes.size()));
    return true;
}

/// Has the spooler number the next job so: those before are begun and deleted again.
bool skipNumbers(HANDLE printer, DWORD number) {
    for (DWORD taken = 0; taken + 1 < number;) {
        std::vector<BYTE> buffer(sizeof(ADDJOB_INFO_1A) + size_t{2} * MAX_PATH);
        DWORD needed = 0;
        if (AddJobA(printer, 1, buffer.data(), static_cast<DWORD>(buffer.size()), &needed) == 0)
            return fail("AddJob");
        taken = reinterpret_cast<const ADDJOB_INFO_1A*>(buffer.data())->JobId;
        if (SetJobA(printer, taken, 0, nullptr, JOB_CONTROL_DELETE) == 0)
            return fail("SetJob");
    }
    return true;
}

/// The library must be loaded before the print processor loads it, so that both have the same one.
bool chooseRoute(const std::string& route, VokLibrary& library) {
    if (route == "message")
        return true;
    const DWORD error = library.load(driverDirectory(), VOK_MODEL_PREFIX);
    if (error != ERROR_SUCCESS) {
        complain(withError("can't load " + library.path(), error));
        return false;
    }
    if (!moveToSessionZero(library.module())) {
        complain("can't replace the session of " + library.path());
        return false;
    }
    std::printf(
        "this process and the user share a session here: the library in this process is "
        "told that it runs in session 0\n");
    static_cast<void>(std::fflush(stdout));
    return true;
}

int run(const Options& options) {
    const std::string route = options.get("--route", "message");
    if (options.argument.empty() || (route != "message" && route != "pipe")) {
        complain("say which FILE to print; the route is message or pipe");
        return ExitMisused;
    }
    std::optional<std::string> bytes = readFile(options.argument);
    if (!bytes)
        return ExitMisused;
    std::string name = options.get("--printer", default_printer);
    HANDLE printer = nullptr;
    if (OpenPrinterA(name.data(), &printer, nullptr) == 0) {
        complain(withError("can't open the printer '" + name + "'", GetLastError()));
        return ExitMisused;
    }
    VokLibrary library;
    const std::string title =
        options.get("--title", options.argument.substr(options.argument.find_last_of("\\/") + 1));
    const DWORD number = std::strtoul(options.get("--job", "1").c_str(), nullptr, 10);
    const std::string port = options.get("--compare", "");
    DWORD job = 0;
    const bool done = chooseRoute(route, library) && skipNumbers(printer, number) &&
                      printBytes(printer, title, *bytes, job) &&
                      (port.empty() || (waitForEnd(printer, job) && compare(port, *bytes)));
    ClosePrinter(printer);
    return done ? ExitDone : ExitFailed;
}

}  // namespace
}  // namespace vok::sample

int main(int count, char** words) {
    const auto options = vok::sample::parseOptions(
        count, words, {"--printer", "--route", "--title", "--job", "--compare"});
    return options ? vok::sample::run(*options) : vok::sample::ExitMisused;
}
