// The companion's names, and the window route.

#include <vok/companion.h>

#include <array>
#include <string>
#include <vector>

#include "checks.h"
#include "job.h"
#include "spooler_stand_in.h"
#include "watched_call.h"

namespace vok::check {

namespace {

// Has the library start the companion and waits for what is asked for. Tells how long that took.
template <typename Question>
std::string appears(Host& host, std::string& seen, const std::string& printer,
                    const std::string& what, const Question& question) {
    Job job(host, printer);
    job.launchOnce();
    if (startedCompanions().empty()) {
        return "the companion can't be started";
    }
    const DWORD start = GetTickCount();
    if (!waitUntil(host.limit(), question)) {
        return "no " + what + within(host.limit());
    }
    seen = what + " after " + std::to_string(GetTickCount() - start) + " ms";
    return {};
}

// A window that is there, and served.
std::string windowAppears(Host& host, std::string& seen, const std::string& printer,
                          const std::string& what, const char* className,
                          const std::string& title) {
    const auto window = [&] { return FindWindowA(className, title.c_str()); };
    const std::string wrong =
        appears(host, seen, printer, what, [&window] { return window() != nullptr; });
    return wrong.empty() ? askWindow(host.limit(), window()) : wrong;
}

std::string checkTitle(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    const std::string title = host.title(printer);
    return windowAppears(host, seen, printer, "window '" + title + "'", nullptr, title);
}

std::string checkClass(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    const std::string className = host.windowClass(printer);
    return windowAppears(host, seen, printer, "window of class '" + className + "'",
                         className.c_str(), host.title(printer));
}

std::string checkHiddenWindow(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    const std::string name = host.windowClass(printer);
    const std::string title = host.hiddenTitle(printer);
    return windowAppears(host, seen, printer,
                         "window of class '" + name + "' with the title '" + title + "'",
                         name.c_str(), title);
}

std::string checkMutex(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    const std::string name = host.mutexName(printer);
    return appears(host, seen, printer, "mutex '" + name + "'", [&] {
        const HANDLE mutex = OpenMutexA(MUTEX_ALL_ACCESS, TRUE, name.c_str());
        if (mutex != nullptr) {
            CloseHandle(mutex);
        }
        return mutex != nullptr;
    });
}

std::string checkFoundAgain(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    Job job(host, printer);
    const std::string wrong = job.launch();
    if (!wrong.empty()) {
        return wrong;
    }
    const std::size_t before = startedCompanions().size();
    Job next(host, printer);
    if (!next.launchOnce() || startedCompanions().size() != before) {
        return "the next launch starts it again instead of finding it";
    }
    seen = "the next launch finds it";
    return {};
}

// The reply is a machine word; one that only looks right when it is cut is taken for another.
std::string checkReplyWords(Host& host, std::string& seen) {
    Job job(host, host.newPrinter());
    std::string wrong = job.launch();
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        wrong = wrong.empty() ? job.send(event) : wrong;
        const LRESULT word = lastExchange().word;
        if (wrong.empty() && word != static_cast<LONG>(word)) {
            return "a reply has more than 32 bits: " + std::to_string(word);
        }
    }
    seen = "replies " + job.replies() + " as whole words";
    return wrong;
}

// Whoever ends, one of them has to go on serving the printer.
std::string checkSecondInstance(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    Job job(host, printer);
    const std::string wrong = job.launch();
    if (!wrong.empty()) {
        return wrong;
    }
    const HANDLE first = startedCompanions().front();
    const HANDLE second = startCompanion(host.arguments(printer));
    const std::array<HANDLE, 2> both = {first, second};
    const DWORD count = static_cast<DWORD>(both.size());
    if (!waitUntil(host.limit(), [&] {
            return WaitForMultipleObjects(count, both.data(), FALSE, 0) != WAIT_TIMEOUT;
        })) {
        return "a second one for the same printer does not end" + within(host.limit());
    }
    seen = "the second one for the same printer ended";
    return job.run();
}

}  // namespace

std::vector<Check> messageChecks(const Host& host) {
    std::vector<Check> checks = {{"window-title", Route::Message, AskedBy::Everybody, checkTitle}};
    if (host.isDral()) {
        checks.push_back({"hidden-window", Route::Message, AskedBy::Everybody, checkHiddenWindow});
    } else {
        checks.push_back({"window-class", Route::Message, AskedBy::Everybody, checkClass});
        checks.push_back({"mutex", Route::Message, AskedBy::PipeRoute, checkMutex});
    }
    const std::vector<Check> events = {
        {"found-again", Route::Message, AskedBy::Everybody, checkFoundAgain},
        {"second-instance", Route::Message, AskedBy::Everybody, checkSecondInstance},
        {"message-job", Route::Message, AskedBy::Everybody, checkJob},
        {"message-reply", Route::Message, AskedBy::Everybody, checkReplyWords},
        {"message-cancel", Route::Message, AskedBy::Everybody, checkCancel},
        {"message-two-jobs", Route::Message, AskedBy::Everybody, checkTwoJobs},
        {"two-printers", Route::Message, AskedBy::Everybody, checkTwoPrinters}};
    checks.insert(checks.end(), events.begin(), events.end());
    return checks;
}

}  // namespace vok::check
