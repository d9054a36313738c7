// Whether the companions of the printer run, by what the library sees of them; and starting them as
// it does, until they can be reached.

#include <windows.h>

#include <fmt/format.h>
#include <tlhelp32.h>
#include <vok/companion.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/agreement.h"
#include "common/system.h"
#include "examination.h"
#include "job/job_record.h"
#include "launch/companion_search.h"
#include "launch/start_companions.h"
#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "logging/option_names.h"

namespace vok::doctor {

namespace {

// Milliseconds: until a window answers, until a companion can be reached, and between two looks.
constexpr DWORD windowPatience = 5000;
constexpr DWORD patience = 20000;
constexpr DWORD pause = 20;

// The first process for which the question is answered by true; all zero when there is none.
template <typename Question>
PROCESSENTRY32 findProcess(const Question& isIt) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    BOOL more = Process32First(snapshot, &entry);
    while (more != 0 && !isIt(entry)) {
        more = Process32Next(snapshot, &entry);
    }
    CloseHandle(snapshot);
    return more != 0 ? entry : PROCESSENTRY32{};
}

// Id of a process whose program's file has that name, of whichever session; 0 when there is none.
DWORD processNamed(const std::string& fileName) {
    const auto isIt = [&](const auto& it) { return tools::sameName(it.szExeFile, fileName); };
    return findProcess(isIt).th32ProcessID;
}

// "process 308, DEMODRAL.EXE": whose window that is.
std::string ownerOf(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const std::string name =
        findProcess([id](const auto& process) { return process.th32ProcessID == id; }).szExeFile;
    return fmt::format("process {}{}{}", id, name.empty() ? "" : ", ", name);
}

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

// On the pipe route whoever holds the mutex is taken for NEMB, and no other is started. The system
// does not tell who holds it.
void examineNembMutex(Examination& examination, const std::string& title, HWND window, bool mutex) {
    const Step step = examination.step("NEMB mutex");
    const std::string fileName = examination.prefix + VOK_NEMB_EXE;
    const DWORD process = processNamed(fileName);
    if (mutex && process == 0) {
        step.complain(examination.spoolerApart, "mutex-foreign",
                      "that of '{}' is there, but no program {} runs: another one holds it", title,
                      fileName);
    } else if (mutex && window == nullptr) {
        step.warn("mutex-foreign",
                  "that of '{}' is there, and a program {} runs, process {}: whether that one "
                  "holds it can't be seen",
                  title, fileName, process);
    } else if (mutex) {
        step.ok("that of '{}' is there, and so is its window, {}", title, ownerOf(window));
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

// Catches the library's own messages; file and registry are not touched.
class CaptureLogger : public BasicLogger {
  public:
    CaptureLogger() : BasicLogger("vok-doctor.log", 0) {}

    void write(const LogCategory* /*category*/, std::uint32_t /*level*/,
               const std::string& text) override {
        lines.push_back(text);
    }

    void write(const LogCategory* /*category*/, std::uint32_t /*level*/,
               const char* text) override {
        lines.emplace_back(text);
    }

    // On, and the messages alone.
    void getOption(const char* /*name*/, std::uint32_t* value,
                   std::uint32_t /*defaultValue*/) override {
        *value = LEVEL_DETAIL;
    }

    const LogCategory* messageCategory() const override { return &category_; }

    std::vector<std::string> lines;

  private:
    const LogCategory category_{exportCategory, LEVEL_CRITICAL};
};

// Launches both companions, and tells what the library says meanwhile.
std::vector<std::string> launch(const Printer& printer, VKDATA& record) {
    const auto logger = std::make_shared<CaptureLogger>();
    loggerSlot().install(logger);
    startCompanions(printer.name.c_str(), printer.port.c_str(), record);
    loggerSlot().clear();
    // A start with the spooler's own token leaves the thread impersonating.
    RevertToSelf();
    return logger->lines;
}

// What is known of one companion after its start.
struct Started {
    std::string path;
    HANDLE handle;   // window or pipe; null when not reached
    HANDLE process;  // null when the start yielded none
    bool byPipe;
    std::string windowClass;
    const char* windowTitle;  // null: any

    std::string fileName() const { return tools::fileOf(path); }
    HWND window() const { return FindWindowA(windowClass.c_str(), windowTitle); }
};

// Nothing while it lives. Whoever has the window lives; where the start yielded no process, any
// program of that name does.
std::optional<std::string> howItEnded(const Started& started) {
    if (!started.byPipe && started.window() != nullptr) {
        return std::nullopt;
    }
    if (started.process == nullptr) {
        return processNamed(started.fileName()) != 0 ? std::nullopt
                                                     : std::optional<std::string>("");
    }
    if (WaitForSingleObject(started.process, 0) != WAIT_OBJECT_0) {
        return std::nullopt;
    }
    DWORD status = 0;
    GetExitCodeProcess(started.process, &status);
    return fmt::format(", exit status {}", status);
}

bool isReached(const Started& started) {
    if (started.byPipe) {
        DWORD available = 0;
        return PeekNamedPipe(started.handle, nullptr, 0, nullptr, &available, nullptr) != 0;
    }
    const HWND window = started.window();
    return window != nullptr && tools::answersMessages(window, windowPatience);
}

// What is wrong with a companion that was waited for in vain.
void reportUnreached(const Step& step, const Started& started,
                     const std::optional<std::string>& end) {
    const std::string fileName = started.fileName();
    if (end) {
        step.problem("companion-died", "{} was started and has ended before it could be reached{}",
                     fileName, *end);
    } else if (started.byPipe) {
        step.problem("pipe-not-opened", "{} runs, but has not opened its pipe after {} ms",
                     fileName, patience);
    } else if (const HWND window = started.window()) {
        step.problem("window-silent",
                     "the window is there, but answers no message after {} ms: {} does not serve "
                     "it",
                     patience, ownerOf(window));
    } else {
        step.problem("companion-silent", "{} runs, but has no window after {} ms", fileName,
                     patience);
    }
}

// Waits until the companion can be reached, or can't be any more.
void awaitCompanion(const Step& step, const Started& started) {
    const DWORD start = GetTickCount();
    std::optional<std::string> end;
    while (!isReached(started)) {
        if (end || GetTickCount() - start > patience) {
            reportUnreached(step, started, end);
            return;
        }
        // Looked at before the pause, so that a companion that ends is looked for once more.
        end = howItEnded(started);
        Sleep(pause);
    }
    step.ok("{} has {} after {} ms", started.fileName(),
            started.byPipe ? "opened its pipe" : "its window", GetTickCount() - start);
}

void reportOutcome(const Step& step, const Started& started) {
    if (!tools::fileExists(started.path)) {
        step.problem("companion-not-started", "{} is not there", started.path);
    } else if (started.handle == INVALID_HANDLE_VALUE) {
        step.problem("pipe-taken", "the pipe could not be made");
    } else if (started.byPipe && started.handle == nullptr) {
        step.problem("companion-not-started", "{} could not be started", started.path);
    } else {
        awaitCompanion(step, started);
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

void launchCompanions(Examination& examination) {
    const Step step = examination.step("launch");
    if (!examination.libraryLoaded || examination.printers.empty()) {
        step.problem("companion-not-started", "not tried: there is no library, or no printer");
        return;
    }
    const Printer& printer = examination.printers.front();
    const std::string hidden = examination.hiddenWindow(printer);
    sample::JobRecord record(printer.name);
    sample::copyText(record->dralTitleSuffix, sizeof record->dralTitleSuffix,
                     hidden.substr(sizeof(VOK_DRAL_HIDDEN) - 1));
    for (const std::string& line : launch(printer, *record.get())) {
        step.ok("{}", line);
    }
    reportOutcome(examination.step("launch DRAL"),
                  {examination.companionPath(VOK_DRAL_EXE), record->hDRAL, record->hDRALProc,
                   record->dralMode == VOK_MODE_PIPE, hidden, nullptr});
    const Step nemb = examination.step("launch NEMB");
    if (record->hDRAL == nullptr && record->dralMode == VOK_MODE_PIPE) {
        nemb.problem("companion-not-started", "not tried: DRAL has no pipe");
        return;
    }
    const std::string title = examination.title(VOK_NEMB_TITLE, printer);
    reportOutcome(nemb, {examination.companionPath(VOK_NEMB_EXE), record->hNEMB, record->hNEMBProc,
                         record->nembMode == VOK_MODE_PIPE, examination.prefix + VOK_NEMB_TITLE,
                         title.c_str()});
}

}  // namespace vok::doctor
