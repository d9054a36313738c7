// Starting the companions as the library does, and waiting until they can be reached.

#include <fmt/format.h>
#include <vok/companion.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/agreement.h"
#include "common/system.h"
#include "examination.h"
#include "job/job_record.h"
#include "launch/start_companions.h"
#include "logging/basic_logger.h"
#include "logging/levels.h"
#include "logging/log_category.h"
#include "logging/logger_slot.h"
#include "logging/option_names.h"

namespace vok::doctor {

namespace {

constexpr DWORD patience = 20000;
constexpr DWORD pause = 20;

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
