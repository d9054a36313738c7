// The pipe route.

#include <vok/companion.h>

#include <string>
#include <vector>

#include "checks.h"
#include "common/agreement.h"
#include "job.h"
#include "spooler_stand_in.h"
#include "watched_call.h"

namespace vok::check {

namespace {

std::string checkOpens(Host& host, std::string& seen) {
    const DWORD start = GetTickCount();
    Job job(host, host.newPrinter());
    const std::string wrong = job.launch();
    seen = "opened after " + std::to_string(GetTickCount() - start) + " ms";
    return wrong;
}

std::string checkReplySize(Host& host, std::string& seen) {
    Job job(host, host.newPrinter());
    std::string wrong = job.launch();
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        wrong = wrong.empty() ? job.send(event) : wrong;
        const DWORD bytes = lastExchange().bytes;
        if (wrong.empty() && bytes != sizeof(VokPipeReply)) {
            return sample::eventName(event) + ": answered by " + std::to_string(bytes) +
                   " bytes, not " + std::to_string(sizeof(VokPipeReply));
        }
    }
    seen = "4 bytes each";
    return wrong;
}

// A companion that reads another number of bytes than a frame has gets out of step: it answers too
// often or not at all. After this many frames that shows, whichever the number.
std::string checkFrameSize(Host& host, std::string& seen) {
    constexpr int frames = 300;
    Job job(host, host.newPrinter());
    std::string wrong = job.launch();
    wrong = wrong.empty() ? job.send(SM_OPENJOB) : wrong;
    for (int count = 1; count < frames && wrong.empty(); ++count) {
        wrong = job.send(SM_STARTPAGE);
    }
    if (!wrong.empty()) {
        return wrong;
    }
    DWORD surplus = 0;
    PeekNamedPipe(job.pipe(), nullptr, 0, nullptr, &surplus, nullptr);
    if (surplus != 0) {
        return std::to_string(surplus) + " bytes too many were answered to " +
               std::to_string(frames) + " frames of " +
               std::to_string(host.isDral() ? sizeof(VokDralFrame) : sizeof(VokNembFrame)) +
               " bytes";
    }
    seen = std::to_string(frames) + " frames, as many answers";
    return job.send(SM_CLOSEJOB);
}

std::string checkLostHost(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    {
        Job lost(host, printer);
        std::string wrong = lost.launch();
        wrong = wrong.empty() ? lost.send(SM_OPENJOB) : wrong;
        if (!wrong.empty()) {
            return wrong;
        }
        lost.drop();
    }
    seen = "served the next job after a host that vanished";
    Job next(host, printer);
    const std::string wrong = next.launchAndRun();
    return wrong.empty() && startedCompanions().size() != 1 ? "it ended with the host's pipe"
                                                            : wrong;
}

// The next host asks by message while a job is open on the pipe.
std::string checkBusy(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    Job byPipe(host, printer);
    std::string wrong = byPipe.launch();
    wrong = wrong.empty() ? byPipe.send(SM_OPENJOB) : wrong;
    if (!wrong.empty()) {
        return wrong;
    }
    {
        host.takeRoute(Route::Message);
        Job byMessage(host, printer);
        wrong = byMessage.launch();
        wrong = wrong.empty() ? byMessage.send(SM_STARTPAGE) : wrong;
        host.takeRoute(Route::Pipe);
    }
    if (!wrong.empty()) {
        return "while a job is open on the pipe, its window: " + wrong;
    }
    seen = "its window answers while a job is open on the pipe";
    return byPipe.send(SM_CLOSEJOB);
}

std::string checkSlowHost(Host& host, std::string& seen) {
    constexpr DWORD pause = 1000;
    Job job(host, host.newPrinter());
    std::string wrong = job.launch();
    wrong = wrong.empty() ? job.send(SM_OPENJOB) : wrong;
    for (const DWORD event : {SM_STARTPAGE, SM_CLOSEJOB}) {
        Sleep(pause);
        wrong = wrong.empty() ? job.send(event) : wrong;
    }
    seen = "pauses of " + std::to_string(pause) + " ms between events";
    return wrong;
}

// Launches that are given up at once, before the companion can have opened the pipe.
std::string checkImpatientHost(Host& host, std::string& seen) {
    constexpr int times = 5;
    const std::string printer = host.newPrinter();
    for (int count = 0; count < times; ++count) {
        Job job(host, printer);
        job.launchOnce();
        job.drop();
    }
    seen = "a job after " + std::to_string(times) + " launches that were given up";
    Job job(host, printer);
    return job.launchAndRun();
}

}  // namespace

std::vector<Check> pipeChecks() {
    return {{"pipe-opens", Route::Pipe, AskedBy::PipeRoute, checkOpens},
            {"pipe-job", Route::Pipe, AskedBy::PipeRoute, checkJob},
            {"pipe-reply-size", Route::Pipe, AskedBy::PipeRoute, checkReplySize},
            {"pipe-frame-size", Route::Pipe, AskedBy::PipeRoute, checkFrameSize},
            {"pipe-cancel", Route::Pipe, AskedBy::PipeRoute, checkCancel},
            {"pipe-two-jobs", Route::Pipe, AskedBy::PipeRoute, checkTwoJobs},
            {"pipe-two-printers", Route::Pipe, AskedBy::PipeRoute, checkTwoPrinters},
            {"lost-host", Route::Pipe, AskedBy::PipeRoute, checkLostHost},
            {"busy", Route::Pipe, AskedBy::PipeRoute, checkBusy},
            {"slow-host", Route::Pipe, AskedBy::PipeRoute, checkSlowHost},
            {"impatient-host", Route::Pipe, AskedBy::PipeRoute, checkImpatientHost}};
}

}  // namespace vok::check
