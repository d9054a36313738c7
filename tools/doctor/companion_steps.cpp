// Whether the companions of the printer run, by what the library sees of them.

#include <vok/companion.h>

#include <initializer_list>
#include <string>

#include "common/window.h"
#include "examination.h"
#include "launch/companion_search.h"
#include "processes.h"

namespace vok::doctor {

namespace {

constexpr const char* notRunning = "not there: the next job starts the companion";

// Says that the windows are there when each of them answers too. They are asked for events on the
// window route alone.
void askWindows(Examination& examination, const char* step, std::initializer_list<HWND> windows,
                const std::string& names) {
    for (const HWND window : windows) {
        if (!tools::answersMessages(window, windowPatience)) {
            examination.report.complain(
                !examination.spoolerApart, step, Trouble::WindowSilent,
                names + ", but no message is answered within " + std::to_string(windowPatience) +
                    " ms: " + ownerOf(window) + " does not serve its window");
            return;
        }
    }
    examination.report.ok(step, names + " and answer, " + ownerOf(*windows.begin()));
}

void examineDralOn9x(Examination& examination, const Printer& printer) {
    constexpr const char* step = "DRAL window";
    const std::string title = VOK_DRAL_TITLE + printer.name;
    const HWND window = FindWindowA(examination.hiddenWindow(printer).c_str(), title.c_str());
    if (window == nullptr) {
        examination.report.ok(step, "'" + title + "' is " + notRunning);
        return;
    }
    askWindows(examination, step, {window}, "'" + title + "' is there");
}

void examineDralWindows(Examination& examination, const Printer& printer) {
    constexpr const char* step = "DRAL windows";
    const std::string title = examination.title(VOK_DRAL_TITLE, printer);
    const std::string hidden = examination.hiddenWindow(printer);
    const HWND shown = FindWindowA(nullptr, title.c_str());
    const HWND served = FindWindowA(nullptr, hidden.c_str());
    if (shown == nullptr) {
        examination.report.ok(step, "'" + title + "' is " + notRunning);
        return;
    }
    if (FindWindowA(hidden.c_str(), nullptr) == nullptr || served == nullptr) {
        examination.report.complain(
            !examination.spoolerApart, step, Trouble::WindowMissing,
            "'" + title + "' is there, but no window of class and title '" + hidden + "'");
        return;
    }
    askWindows(examination, step, {shown, served},
               "'" + title + "' and '" + hidden + "' are there");
}

// In the spooler's eyes NEMB's window may lie in another session, and its mutex tells.
void examineNembWindow(Examination& examination, const Printer& printer, HWND window, bool mutex) {
    constexpr const char* step = "NEMB window";
    const std::string title = examination.title(VOK_NEMB_TITLE, printer);
    const std::string text = "'" + title + "' is ";
    if (window != nullptr) {
        askWindows(examination, step, {window}, text + "there");
    } else if (FindWindowA(nullptr, title.c_str()) != nullptr) {
        examination.report.problem(
            step, Trouble::WindowMissing,
            text + "there, but not of class '" + examination.prefix + VOK_NEMB_TITLE + "'");
    } else if (mutex) {
        examination.report.complain(!examination.spoolerApart, step, Trouble::WindowMissing,
                                    text + "not in this session, but its mutex is there");
    } else {
        examination.report.ok(step, text + notRunning);
    }
}

// On the pipe route whoever holds the mutex is taken for NEMB, and no other is started.
void examineNembMutex(Examination& examination, const Printer& printer, HWND window, bool mutex) {
    constexpr const char* step = "NEMB mutex";
    const std::string fileName = examination.prefix + VOK_NEMB_EXE;
    const std::string name = "that of '" + examination.title(VOK_NEMB_TITLE, printer) + "' is ";
    const DWORD process = processNamed(fileName);
    if (mutex && process == 0) {
        examination.report.complain(
            examination.spoolerApart, step, Trouble::MutexForeign,
            name + "there, but no program " + fileName + " runs: another one holds it");
    } else if (mutex) {
        examination.report.ok(
            step, name + "there, and " + fileName + " runs, process " + std::to_string(process));
    } else if (window != nullptr) {
        examination.report.complain(examination.spoolerApart, step, Trouble::MutexMissing,
                                    name + "not there although the window is");
    } else {
        examination.report.ok(step, name + notRunning);
    }
}

void examineNemb(Examination& examination, const Printer& printer) {
    const std::string title = examination.title(VOK_NEMB_TITLE, printer);
    const std::string className = examination.prefix + VOK_NEMB_TITLE;
    const HWND window = FindWindowA(className.c_str(), title.c_str());
    const bool mutex = IsXFileRunning(title.c_str());
    examineNembWindow(examination, printer, window, mutex);
    examineNembMutex(examination, printer, window, mutex);
}

// Looks without connecting, which would take the pipe away from the companion.
void examinePipe(Examination& examination, const Printer& printer, const char* step,
                 const char* namePrefix) {
    constexpr DWORD shortest = 1;
    const std::string name = namePrefix + printer.name;
    const bool there =
        WaitNamedPipeA(name.c_str(), shortest) != 0 || GetLastError() != ERROR_FILE_NOT_FOUND;
    if (!there) {
        examination.report.ok(step, name + " is not there, as it should be between jobs");
    } else if (printer.jobs != 0) {
        examination.report.ok(step, name + " is there while a job is in the queue");
    } else {
        examination.report.complain(examination.spoolerApart, step, Trouble::PipeTaken,
                                    name + " is there although no job is in the queue");
    }
}

}  // namespace

void examineCompanions(Examination& examination) {
    if (examination.prefix.empty()) {
        return;
    }
    for (const Printer& printer : examination.printers) {
        if (examination.family == family9x) {
            examineDralOn9x(examination, printer);
        } else {
            examineDralWindows(examination, printer);
        }
        examineNemb(examination, printer);
        if (hasSessions(examination.family)) {
            examinePipe(examination, printer, "DRAL pipe", VOK_DRAL_PIPE);
            examinePipe(examination, printer, "NEMB pipe", VOK_NEMB_PIPE);
        }
    }
}

}  // namespace vok::doctor
