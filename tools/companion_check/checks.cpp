// Whether a companion keeps the contract: its names and the window route, both routes, the pipe
// route.
#include "checks.h"

#include <fmt/format.h>
#include <vok/companion.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <string>
#include <vector>

#include "common/agreement.h"
#include "common/machine.h"
#include "spooler_stand_in.h"

namespace vok::check {

namespace {

// Has the library start the companion and waits for what is asked for. Tells how long that took.
std::string appears(Job& job, const std::string& what, const std::function<bool()>& isThere) {
    job.launchOnce();
    require(!startedCompanions().empty(), "the companion can't be started");
    const DWORD start = GetTickCount();
    await(job.host().limit(), "no " + what, isThere);
    return fmt::format("{} after {} ms", what, GetTickCount() - start);
}

// A window that is there, and served.
std::string windowAppears(Job& job, const std::string& what, const char* className,
                          const std::string& title) {
    const auto window = [&] { return FindWindowA(className, title.c_str()); };
    std::string seen = appears(job, what, [&window] { return window() != nullptr; });
    askWindow(job.host().limit(), window());
    return seen;
}

std::string checkTitle(Job& job) {
    const std::string title = job.title();
    return windowAppears(job, fmt::format("window '{}'", title), nullptr, title);
}

std::string checkClass(Job& job) {
    const std::string name = job.windowClass();
    return windowAppears(job, fmt::format("window of class '{}'", name), name.c_str(), job.title());
}

std::string checkHiddenWindow(Job& job) {
    const std::string name = job.windowClass();
    const std::string title = sample::is9x() ? job.title() : name;
    return windowAppears(job, fmt::format("window of class '{}' with the title '{}'", name, title),
                         name.c_str(), title);
}

std::string checkMutex(Job& job) {
    std::string name = job.title();
    std::ranges::transform(name, name.begin(),
                           [](unsigned char letter) { return std::toupper(letter); });
    name.insert(0, VOK_MUTEX_PREFIX);
    return appears(job, fmt::format("mutex '{}'", name), [&] {
        const HANDLE mutex = OpenMutexA(MUTEX_ALL_ACCESS, TRUE, name.c_str());
        if (mutex != nullptr) {
            CloseHandle(mutex);
        }
        return mutex != nullptr;
    });
}

std::string checkFoundAgain(Job& job) {
    job.launch();
    const std::size_t before = startedCompanions().size();
    Job next(job.host(), job.printer());
    require(next.launchOnce() && startedCompanions().size() == before,
            "the next launch starts it again instead of finding it");
    return "the next launch finds it";
}

// The reply is a machine word; one that only looks right when it is cut is taken for another.
std::string checkReplyWords(Job& job) {
    job.launch();
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        job.send(event);
        const LRESULT word = exchange().word;
        require(word == static_cast<LONG>(word),
                "a reply has more than 32 bits: " + std::to_string(word));
    }
    return "replies " + job.replies() + " as whole words";
}

// Whoever ends, one of them has to go on serving the printer.
std::string checkSecondInstance(Job& job) {
    job.launch();
    const HANDLE first = startedCompanions().front();
    const std::string arguments =
        VOK_ARG_PRINTER + job.printer() + (job.host().isDral() ? "" : VOK_ARG_JOB);
    const std::array<HANDLE, 2> both = {first, startCompanion(arguments)};
    await(job.host().limit(), "a second one for the same printer does not end", [&] {
        return WaitForMultipleObjects(both.size(), both.data(), FALSE, 0) != WAIT_TIMEOUT;
    });
    job.run();
    return "the second one for the same printer ended";
}

std::string checkJob(Job& job) {
    job.launchAndRun();
    return "replies " + job.replies();
}

// A job may be cancelled before it was opened, after that, and between its pages.
std::string checkCancel(Job& job) {
    const std::vector<std::vector<DWORD>> ways = {
        {SM_CANCELJOB},
        {SM_OPENJOB, SM_CANCELJOB},
        {SM_OPENJOB, SM_STARTPAGE, SM_CANCELJOB},
        {SM_OPENJOB, SM_STARTPAGE, SM_STARTPAGE, SM_CANCELJOB}};
    for (const std::vector<DWORD>& way : ways) {
        endCompanions();
        Job cancelled(job.host(), job.host().newPrinter());
        inCase(fmt::format("after {} events: ", way.size() - 1), [&] {
            cancelled.launch();
            for (const DWORD event : way) {
                cancelled.send(event);
            }
        });
    }
    return "before the opening, after it, and between pages";
}

std::string checkTwoJobs(Job& job) {
    for (int number = 1; number <= 2; ++number) {
        Job one(job.host(), job.printer());
        inCase(fmt::format("job {}: ", number), [&] { one.launchAndRun(); });
    }
    const std::size_t starts = startedCompanions().size();
    require(starts == 1,
            fmt::format("the companion was started {} times: it did not outlive the first job",
                        starts));
    return "one companion served both";
}

std::string checkTwoPrinters(Job& job) {
    Job second(job.host(), job.host().newPrinter());
    job.launch();
    second.launch();
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        job.send(event);
        second.send(event);
    }
    return "both answered, one job within the other";
}

std::string checkOpens(Job& job) {
    const DWORD start = GetTickCount();
    job.launch();
    return fmt::format("opened after {} ms", GetTickCount() - start);
}

std::string checkReplySize(Job& job) {
    job.launch();
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        job.send(event);
        const DWORD bytes = exchange().bytes;
        require(bytes == sizeof(VokPipeReply),
                fmt::format("{}: answered by {} bytes, not {}", sample::eventName(event), bytes,
                            sizeof(VokPipeReply)));
    }
    return "4 bytes each";
}

// A companion that reads another number of bytes than a frame has gets out of step: it answers too
// often or not at all. After this many frames that shows, whichever the number.
std::string checkFrameSize(Job& job) {
    constexpr int frames = 300;
    job.launch();
    job.send(SM_OPENJOB);
    for (int count = 1; count < frames; ++count) {
        job.send(SM_STARTPAGE);
    }
    DWORD surplus = 0;
    PeekNamedPipe(job.pipe(), nullptr, 0, nullptr, &surplus, nullptr);
    require(surplus == 0,
            fmt::format("{} bytes too many were answered to {} frames of {} bytes", surplus, frames,
                        job.host().isDral() ? sizeof(VokDralFrame) : sizeof(VokNembFrame)));
    job.send(SM_CLOSEJOB);
    return fmt::format("{} frames, as many answers", frames);
}

std::string checkLostHost(Job& job) {
    {
        Job lost(job.host(), job.printer());
        lost.launch();
        lost.send(SM_OPENJOB);
        lost.drop();
    }
    job.launchAndRun();
    require(startedCompanions().size() == 1, "it ended with the host's pipe");
    return "served the next job after a host that vanished";
}

// The next host asks by message while a job is open on the pipe.
std::string checkBusy(Job& job) {
    job.launch();
    job.send(SM_OPENJOB);
    inCase("while a job is open on the pipe, its window: ", [&] {
        job.host().takeRoute(Route::Message);
        Job byMessage(job.host(), job.printer());
        byMessage.launch();
        byMessage.send(SM_STARTPAGE);
    });
    job.host().takeRoute(Route::Pipe);
    job.send(SM_CLOSEJOB);
    return "its window answers while a job is open on the pipe";
}

std::string checkSlowHost(Job& job) {
    constexpr DWORD pause = 1000;
    job.launch();
    job.send(SM_OPENJOB);
    for (const DWORD event : {SM_STARTPAGE, SM_CLOSEJOB}) {
        Sleep(pause);
        job.send(event);
    }
    return fmt::format("pauses of {} ms between events", pause);
}

// Launches that are given up at once, before the companion can have opened the pipe.
std::string checkImpatientHost(Job& job) {
    constexpr int times = 5;
    for (int count = 0; count < times; ++count) {
        Job givenUp(job.host(), job.printer());
        givenUp.launchOnce();
        givenUp.drop();
    }
    job.launchAndRun();
    return fmt::format("a job after {} launches that were given up", times);
}

}  // namespace

std::vector<Check> checksFor(const Host& host) {
    std::vector<Check> checks = {{"window-title", Route::Message, checkTitle}};
    if (host.isDral()) {
        checks.push_back({"hidden-window", Route::Message, checkHiddenWindow});
    } else {
        checks.push_back({"window-class", Route::Message, checkClass});
        checks.push_back({"mutex", Route::Message, checkMutex, true});
    }
    checks.insert(checks.end(), {{"found-again", Route::Message, checkFoundAgain},
                                 {"second-instance", Route::Message, checkSecondInstance},
                                 {"message-job", Route::Message, checkJob},
                                 {"message-reply", Route::Message, checkReplyWords},
                                 {"message-cancel", Route::Message, checkCancel},
                                 {"message-two-jobs", Route::Message, checkTwoJobs},
                                 {"two-printers", Route::Message, checkTwoPrinters},
                                 {"pipe-opens", Route::Pipe, checkOpens},
                                 {"pipe-job", Route::Pipe, checkJob},
                                 {"pipe-reply-size", Route::Pipe, checkReplySize},
                                 {"pipe-frame-size", Route::Pipe, checkFrameSize},
                                 {"pipe-cancel", Route::Pipe, checkCancel},
                                 {"pipe-two-jobs", Route::Pipe, checkTwoJobs},
                                 {"pipe-two-printers", Route::Pipe, checkTwoPrinters},
                                 {"lost-host", Route::Pipe, checkLostHost},
                                 {"busy", Route::Pipe, checkBusy},
                                 {"slow-host", Route::Pipe, checkSlowHost},
                                 {"impatient-host", Route::Pipe, checkImpatientHost}});
    return checks;
}

}  // namespace vok::check
