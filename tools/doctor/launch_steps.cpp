// Starting the companions as the library does, and waiting until they can be reached.

#include <vok/companion.h>

#include <string>

#include "capture_logger.h"
#include "common/agreement.h"
#include "common/window.h"
#include "examination.h"
#include "launch/start_companions.h"
#include "messaging/protocol.h"
#include "processes.h"

namespace vok::doctor {

namespace {

constexpr DWORD patience = 20000;
constexpr DWORD pause = 20;

// What is known of one companion after its start.
struct Started {
    const char* step;
    const char* fileName;
    HANDLE handle;   // window or pipe; null when not reached
    HANDLE process;  // null when the start yielded none
    DWORD mode;
    std::string windowClass;  // empty: any
    std::string windowTitle;  // empty: any
};

const char* textOrNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

HWND windowOf(const Started& started) {
    return FindWindowA(textOrNull(started.windowClass), textOrNull(started.windowTitle));
}

// Whoever has the window lives; where the start yielded no process, any program of that name does.
bool isAlive(const Started& started, const std::string& fileName, std::string& end) {
    if (started.mode != VOK_MODE_PIPE && windowOf(started) != nullptr) {
        return true;
    }
    if (started.process == nullptr) {
        return processNamed(fileName) != 0;
    }
    if (WaitForSingleObject(started.process, 0) != WAIT_OBJECT_0) {
        return true;
    }
    DWORD status = 0;
    GetExitCodeProcess(started.process, &status);
    end = ", exit status " + std::to_string(status);
    return false;
}

bool isReached(const Started& started) {
    if (started.mode == VOK_MODE_PIPE) {
        DWORD available = 0;
        return PeekNamedPipe(started.handle, nullptr, 0, nullptr, &available, nullptr) != 0;
    }
    const HWND window = windowOf(started);
    return window != nullptr && tools::answersMessages(window, windowPatience);
}

// What is wrong with a companion that was waited for in vain.
void reportUnreached(Examination& examination, const Started& started, const std::string& fileName,
                     bool alive, const std::string& end) {
    const std::string waited = std::to_string(patience) + " ms";
    if (!alive) {
        examination.report.problem(
            started.step, Trouble::CompanionDied,
            fileName + " was started and has ended before it could be reached" + end);
    } else if (started.mode == VOK_MODE_PIPE) {
        examination.report.problem(started.step, Trouble::PipeNotOpened,
                                   fileName + " runs, but has not opened its pipe after " + waited);
    } else if (const HWND window = windowOf(started)) {
        examination.report.problem(started.step, Trouble::WindowSilent,
                                   "the window is there, but answers no message after " + waited +
                                       ": " + ownerOf(window) + " does not serve it");
    } else {
        examination.report.problem(started.step, Trouble::CompanionSilent,
                                   fileName + " runs, but has no window after " + waited);
    }
}

// Waits until the companion can be reached, or can't be any more.
void awaitCompanion(Examination& examination, const Started& started) {
    const std::string fileName = examination.prefix + started.fileName;
    const bool byPipe = started.mode == VOK_MODE_PIPE;
    const DWORD start = GetTickCount();
    bool alive = true;
    std::string end;
    while (!isReached(started)) {
        if (!alive || GetTickCount() - start > patience) {
            reportUnreached(examination, started, fileName, alive, end);
            return;
        }
        // Looked at before the pause, so that a companion that ends is looked for once more.
        alive = isAlive(started, fileName, end);
        Sleep(pause);
    }
    examination.report.ok(started.step,
                          fileName +
                              (byPipe ? " has opened its pipe after " : " has its window after ") +
                              std::to_string(GetTickCount() - start) + " ms");
}

void reportOutcome(Examination& examination, const Started& started) {
    const std::string path = examination.companionPath(started.fileName);
    if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        examination.report.problem(started.step, Trouble::CompanionNotStarted,
                                   path + " is not there");
        return;
    }
    if (started.handle == INVALID_HANDLE_VALUE) {
        examination.report.problem(started.step, Trouble::PipeTaken, "the pipe could not be made");
        return;
    }
    if (started.mode == VOK_MODE_PIPE && started.handle == nullptr) {
        examination.report.problem(started.step, Trouble::CompanionNotStarted,
                                   path + " could not be started");
        return;
    }
    awaitCompanion(examination, started);
}

void release(Started& started) {
    if (started.mode == VOK_MODE_PIPE && started.handle != nullptr &&
        started.handle != INVALID_HANDLE_VALUE) {
        ClosePipe(&started.handle);
    }
    if (started.process != nullptr) {
        CloseHandle(started.process);
    }
}

void reportBoth(Examination& examination, const Printer& printer, const VKDATA& record) {
    Started dral = {"launch DRAL",
                    VOK_DRAL_EXE,
                    record.hDRAL,
                    record.hDRALProc,
                    record.dralMode,
                    examination.hiddenWindow(printer),
                    ""};
    reportOutcome(examination, dral);
    if (record.hDRAL == nullptr && record.dralMode == VOK_MODE_PIPE) {
        examination.report.problem("launch NEMB", Trouble::CompanionNotStarted,
                                   "not tried: DRAL has no pipe");
    } else {
        Started nemb = {"launch NEMB",
                        VOK_NEMB_EXE,
                        record.hNEMB,
                        record.hNEMBProc,
                        record.nembMode,
                        examination.prefix + VOK_NEMB_TITLE,
                        examination.title(VOK_NEMB_TITLE, printer)};
        reportOutcome(examination, nemb);
        release(nemb);
    }
    release(dral);
}

}  // namespace

void launchCompanions(Examination& examination) {
    constexpr const char* step = "launch";
    if (!examination.libraryLoaded || examination.printers.empty()) {
        examination.report.problem(step, Trouble::CompanionNotStarted,
                                   "not tried: there is no library, or no printer");
        return;
    }
    const Printer& printer = examination.printers.front();
    VKDATA record = {};
    const std::string hidden = examination.hiddenWindow(printer);
    sample::copyText(record.dralTitleSuffix, sizeof record.dralTitleSuffix,
                     hidden.substr(sizeof(VOK_DRAL_HIDDEN) - 1));
    {
        const MessageCapture capture;
        startCompanions(printer.name.c_str(), printer.port.c_str(), record);
        for (const std::string& line : capture.lines()) {
            examination.report.ok(step, line);
        }
    }
    // A start with the spooler's own token leaves the thread impersonating.
    RevertToSelf();
    reportBoth(examination, printer, record);
    for (const HANDLE thread : {record.hDRALThread, record.hNEMBThread}) {
        if (thread != nullptr) {
            CloseHandle(thread);
        }
    }
}

}  // namespace vok::doctor
