// Whether the companions of the printer run, by what the library sees of them.

#include <vok/companion.h>

#include <string>

#include "common/system_text.h"
#include "examination.h"
#include "launch/companion_search.h"

namespace vok::doctor {

namespace {

constexpr const char* notRunning = "not there: the next job starts the companion";

bool windowExists(const char* className, const std::string& title) {
    return FindWindowA(className, title.c_str()) != nullptr;
}

void examineDralOn9x(Examination& examination) {
    const std::string title = VOK_DRAL_TITLE + examination.printer;
    const bool there = windowExists(examination.hiddenWindow().c_str(), title);
    examination.report.ok("DRAL window", "'" + title + "' is " + (there ? "there" : notRunning));
}

void examineDralWindows(Examination& examination) {
    constexpr const char* step = "DRAL windows";
    const std::string title = examination.title(VOK_DRAL_TITLE);
    const std::string hidden = examination.hiddenWindow();
    if (!windowExists(nullptr, title)) {
        examination.report.ok(step, "'" + title + "' is " + notRunning);
        return;
    }
    if (FindWindowA(hidden.c_str(), nullptr) == nullptr || !windowExists(nullptr, hidden)) {
        examination.report.complain(
            !examination.spoolerApart, step, Trouble::WindowMissing,
            "'" + title + "' is there, but no window of class and title '" + hidden + "'");
        return;
    }
    examination.report.ok(step, "'" + title + "' and '" + hidden + "' are there");
}

// In the spooler's eyes NEMB's window may lie in another session, and its mutex tells.
void examineNembNames(Examination& examination) {
    constexpr const char* windowStep = "NEMB window";
    constexpr const char* mutexStep = "NEMB mutex";
    const std::string title = examination.title(VOK_NEMB_TITLE);
    const std::string className = examination.prefix + VOK_NEMB_TITLE;
    const bool window = windowExists(className.c_str(), title);
    const bool mutex = IsXFileRunning(title.c_str());
    const std::string text = "'" + title + "' is ";
    if (window) {
        examination.report.ok(windowStep, text + "there");
    } else if (windowExists(nullptr, title)) {
        examination.report.problem(windowStep, Trouble::WindowMissing,
                                   text + "there, but not of class '" + className + "'");
    } else if (mutex) {
        examination.report.complain(!examination.spoolerApart, windowStep, Trouble::WindowMissing,
                                    text + "not in this session, but its mutex is there");
    } else {
        examination.report.ok(windowStep, text + notRunning);
    }
    if (mutex) {
        examination.report.ok(mutexStep, "is there");
    } else if (window) {
        examination.report.complain(examination.spoolerApart, mutexStep, Trouble::MutexMissing,
                                    "is not there although the window is");
    } else {
        examination.report.ok(mutexStep, notRunning);
    }
}

// Looks without connecting, which would take the pipe away from the companion.
void examinePipe(Examination& examination, const char* step, const char* namePrefix) {
    constexpr DWORD shortest = 1;
    const std::string name = namePrefix + examination.printer;
    const bool there =
        WaitNamedPipeA(name.c_str(), shortest) != 0 || GetLastError() != ERROR_FILE_NOT_FOUND;
    if (!there) {
        examination.report.ok(step, name + " is not there, as it should be between jobs");
    } else if (examination.jobs != 0) {
        examination.report.ok(step, name + " is there while a job is in the queue");
    } else {
        examination.report.complain(examination.spoolerApart, step, Trouble::PipeTaken,
                                    name + " is there although no job is in the queue");
    }
}

}  // namespace

void examineCompanions(Examination& examination) {
    if (examination.printer.empty() || examination.prefix.empty()) {
        return;
    }
    if (examination.family == family9x) {
        examineDralOn9x(examination);
    } else {
        examineDralWindows(examination);
    }
    examineNembNames(examination);
    if (hasSessions(examination.family)) {
        examinePipe(examination, "DRAL pipe", VOK_DRAL_PIPE);
        examinePipe(examination, "NEMB pipe", VOK_NEMB_PIPE);
    }
}

}  // namespace vok::doctor
