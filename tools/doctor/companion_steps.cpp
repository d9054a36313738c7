// Whether the companions of the printer run, by what the library sees of them.

#include <vok/companion.h>

#include <initializer_list>
#include <string>

#include "common/system.h"
#include "examination.h"
#include "launch/companion_search.h"

namespace vok::doctor {

namespace {

constexpr const char* notRunning = "not there: the next job starts the companion";

// Says that the windows are there when each of them answers too. They are asked for events on the
// window route alone.
void askWindows(const Examination& examination, const Step& step,
                std::initializer_list<HWND> windows, const std::string& names) {
    for (const HWND window : windows) {
        if (!tools::answersMessages(window, windowPatience)) {
            step.complain(
                !examination.spoolerApart, "window-silent",
                "{}, but no message is answered within {} ms: {} does not serve its window", names,
                windowPatience, ownerOf(window));
            return;
        }
    }
    step.ok("{} and answer, {}", names, ownerOf(*windows.begin()));
}

void examineDralOn9x(Examination& examination, const Printer& printer) {
    const Step step = examination.step("DRAL window");
    const std::string title = VOK_DRAL_TITLE + printer.name;
    const HWND window = FindWindowA(examination.hiddenWindow(printer).c_str(), title.c_str());
    if (window == nullptr) {
        step.ok("'{}' is {}", title, notRunning);
    } else {
        askWindows(examination, step, {window}, "'" + title + "' is there");
    }
}

void examineDralWindows(Examination& examination, const Printer& printer) {
    const Step step = examination.step("DRAL windows");
    const std::string title = examination.title(VOK_DRAL_TITLE, printer);
    const std::string hidden = examination.hiddenWindow(printer);
    const HWND shown = FindWindowA(nullptr, title.c_str());
    const HWND served = FindWindowA(nullptr, hidden.c_str());
    if (shown == nullptr) {
        step.ok("'{}' is {}", title, notRunning);
    } else if (FindWindowA(hidden.c_str(), nullptr) == nullptr || served == nullptr) {
        step.complain(!examination.spoolerApart, "window-missing",
                      "'{}' is there, but no window of class and title '{}'", title, hidden);
    } else {
        askWindows(examination, step, {shown, served},
                   "'" + title + "' and '" + hidden + "' are there");
    }
}

// In the spooler's eyes NEMB's window may lie in another session, and its mutex tells.
void examineNembWindow(Examination& examination, const std::string& title, HWND window,
                       bool mutex) {
    const Step step = examination.step("NEMB window");
    if (window != nullptr) {
        askWindows(examination, step, {window}, "'" + title + "' is there");
    } else if (FindWindowA(nullptr, title.c_str()) != nullptr) {
        step.problem("window-missing", "'{}' is there, but not of class '{}{}'", title,
                     examination.prefix, VOK_NEMB_TITLE);
    } else if (mutex) {
        step.complain(!examination.spoolerApart, "window-missing",
                      "'{}' is not in this session, but its mutex is there", title);
    } else {
        step.ok("'{}' is {}", title, notRunning);
    }
}

// On the pipe route whoever holds the mutex is taken for NEMB, and no other is started.
void examineNembMutex(Examination& examination, const std::string& title, HWND window, bool mutex) {
    const Step step = examination.step("NEMB mutex");
    const std::string fileName = examination.prefix + VOK_NEMB_EXE;
    const DWORD process = processNamed(fileName);
    if (mutex && process == 0) {
        step.complain(examination.spoolerApart, "mutex-foreign",
                      "that of '{}' is there, but no program {} runs: another one holds it", title,
                      fileName);
    } else if (mutex) {
        step.ok("that of '{}' is there, and {} runs, process {}", title, fileName, process);
    } else if (window != nullptr) {
        step.complain(examination.spoolerApart, "mutex-missing",
                      "that of '{}' is not there although the window is", title);
    } else {
        step.ok("that of '{}' is {}", title, notRunning);
    }
}

// Looks without connecting, which would take the pipe away from the companion.
void examinePipe(Examination& examination, const Printer& printer, const char* stepName,
                 const char* namePrefix) {
    const Step step = examination.step(stepName);
    constexpr DWORD shortest = 1;
    const std::string name = namePrefix + printer.name;
    const bool there =
        WaitNamedPipeA(name.c_str(), shortest) != 0 || GetLastError() != ERROR_FILE_NOT_FOUND;
    if (!there) {
        step.ok("{} is not there, as it should be between jobs", name);
    } else if (printer.jobs != 0) {
        step.ok("{} is there while a job is in the queue", name);
    } else {
        step.complain(examination.spoolerApart, "pipe-taken",
                      "{} is there although no job is in the queue", name);
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
        const std::string title = examination.title(VOK_NEMB_TITLE, printer);
        const std::string className = examination.prefix + VOK_NEMB_TITLE;
        const HWND window = FindWindowA(className.c_str(), title.c_str());
        const bool mutex = IsXFileRunning(title.c_str());
        examineNembWindow(examination, title, window, mutex);
        examineNembMutex(examination, title, window, mutex);
        if (hasSessions(examination.family)) {
            examinePipe(examination, printer, "DRAL pipe", VOK_DRAL_PIPE);
            examinePipe(examination, printer, "NEMB pipe", VOK_NEMB_PIPE);
        }
    }
}

}  // namespace vok::doctor
