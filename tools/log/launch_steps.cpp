#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "steps.h"
#include "text.h"

namespace vok::log {

namespace {

constexpr std::string_view invalidHandle = "0xFFFFFFFFFFFFFFFF";
constexpr std::string_view attempts = "FindWindow attempts";

struct LaunchStep {
    const Message& message;
    std::uint64_t line;
    LaunchProgress& progress;
    Job& job;

    Companion& companion() const { return job.at(progress.side); }
    StartAttempt& attempt() const { return progress.at(progress.side); }

    void report(FindingId id, std::string detail = {}) const {
        job.add({id, line, progress.side, std::move(detail)});
        attempt().explained = true;
    }

    void fail(FindingId id, std::string detail = {}) const {
        report(id, std::move(detail));
        companion().origin = Origin::NotReached;
    }

    void failWithCode(FindingId id) const { fail(id, codeText(message.value)); }

    void findRunning() const {
        companion().origin = Origin::Running;
        attempt().reached = true;
    }

    void startAsUser() const {
        attempt().asUser = true;
        companion().start = attempt().token ? Start::AsUser : Start::AsSpooler;
    }

    void takeToken() const {
        attempt().token = !message.value.starts_with('0');
        constexpr std::string_view label = "lastError=";
        const std::size_t at = message.value.find(label);
        if (!attempt().token && at != std::string_view::npos) {
            job.add({FindingId::NoUserToken, line, progress.side,
                     codeText(message.value.substr(at + label.size()))});
        }
    }

    void takeWindow() const {
        Companion& target = companion();
        target.origin = Origin::Started;
        if (target.start == Start::None) {
            target.start = Start::WinExec;
        }
        // The start itself succeeded, whatever becomes of the window.
        attempt().reached = true;
        if (message.value.empty()) {
            return report(FindingId::NoWindowYet);
        }
        target.handle = message.value;
    }

    void takePipe() const {
        if (message.value == invalidHandle) {
            return fail(FindingId::PipeNotMade);
        }
        if (message.value.empty()) {
            return explainSilence();
        }
        companion().handle = message.value;
        attempt().reached = true;
    }

    void takeWindow9x() const {
        companion().route = Route::Window9x;
        if (!message.value.empty()) {
            found9x(Origin::Running, message.value);
        }
    }

    void takeSearch9x() const {
        const std::string_view handle = message.value.substr(0, message.value.find(attempts));
        if (handle.empty()) {
            return fail(FindingId::WindowNotFound);
        }
        found9x(Origin::Started, handle);
    }

    void found9x(Origin origin, std::string_view handle) const {
        companion().origin = origin;
        companion().handle = handle;
        attempt().reached = true;
        // The next lines are NEMB's, which the first of them does not say.
        progress.side = Side::Nemb;
    }

    // The start ended without a word: what was tried last is what failed.
    void explainSilence() const {
        const StartAttempt& now = attempt();
        if (now.explained || now.reached) {
            companion().origin = now.reached ? companion().origin : Origin::NotReached;
            return;
        }
        fail(now.token && !now.asUser ? FindingId::NoEnvironment : FindingId::CompanionNotStarted);
    }

    void reachBoth() const {
        job.launch.result = LaunchResult::Reached;
        if (const auto tick = leadingNumber(message.value)) {
            job.time.startTick(static_cast<std::uint32_t>(*tick));
        }
        // A window that was found at once is not logged.
        for (Companion* target : {&job.dral, &job.nemb}) {
            if (target->route == Route::Window && target->origin != Origin::Started) {
                target->origin = Origin::Running;
            }
        }
    }

    void failBoth() const {
        job.launch.result = LaunchResult::NotReached;
        progress.side = Side::Dral;
        if (attempt().path) {
            explainSilence();
        }
        const bool nembWasNext = job.nemb.route != Route::None;
        const bool dralIsWhy = attempt().explained;
        progress.side = Side::Nemb;
        if (nembWasNext && !dralIsWhy) {
            explainSilence();
        }
    }
};

using Now = const LaunchStep&;

// What each line does; the others tell nothing more.
constexpr std::pair<Step, void (*)(Now)> steps[] = {
    {Step::RouteChosen, [](Now now) { now.companion().route = now.message.text.route; }},
    {Step::Running, [](Now now) { now.findRunning(); }},
    {Step::Path, [](Now now) { now.attempt().path = true; }},
    {Step::Launching, [](Now now) { now.companion().origin = Origin::Started; }},
    {Step::LaunchTrue, [](Now now) { now.reachBoth(); }},
    {Step::LaunchFalse, [](Now now) { now.failBoth(); }},
    {Step::PrinterNotOpened,
     [](Now now) { now.fail(FindingId::PrinterNotOpened, now.job.printer); }},
    {Step::NoPrefixData, [](Now now) { now.fail(FindingId::NoPrefixData, now.job.printer); }},
    {Step::CreateProcessFailed, [](Now now) { now.failWithCode(FindingId::StartFailed); }},
    {Step::AsUserFailed, [](Now now) { now.failWithCode(FindingId::StartAsUserFailed); }},
    {Step::StartFailed, [](Now now) { now.explainSilence(); }},
    {Step::NoModuleName,
     [](Now now) { now.job.add({FindingId::ModuleName, now.line, Side::None, {}}); }},
    {Step::UserToken, [](Now now) { now.takeToken(); }},
    {Step::StartByWinExec, [](Now now) { now.companion().start = Start::WinExec; }},
    {Step::StartAsUser, [](Now now) { now.startAsUser(); }},
    {Step::CreateProcess, [](Now now) { now.companion().start = Start::CreateProcess; }},
    {Step::WindowAfterStart, [](Now now) { now.takeWindow(); }},
    {Step::PipeReady, [](Now now) { now.takePipe(); }},
    {Step::Window9xFound, [](Now now) { now.takeWindow9x(); }},
    {Step::Window9xSearched, [](Now now) { now.takeSearch9x(); }},
};

}  // namespace

void takeLaunchStep(const Message& message, std::uint64_t line, LaunchProgress& progress,
                    Job& job) {
    if (message.text.side != Side::None) {
        progress.side = message.text.side;
    }
    const auto* found =
        std::ranges::find(steps, message.text.step, [](const auto& step) { return step.first; });
    if (found != std::end(steps)) {
        found->second({message, line, progress, job});
    }
}

}  // namespace vok::log
