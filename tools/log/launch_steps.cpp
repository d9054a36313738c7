#include "launch_steps.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "text.h"

namespace vok::log {

namespace {

constexpr std::string_view invalidHandle = "0xFFFFFFFFFFFFFFFF";
constexpr std::string_view attempts = "FindWindow attempts";

std::string code(std::string_view value) {
    const auto number = leadingNumber(value);
    return number ? "code " + std::to_string(*number) : std::string();
}

class LaunchStep {
  public:
    LaunchStep(const Message& message, std::uint64_t line, LaunchProgress& progress, Job& job)
        : message_(message), line_(line), progress_(progress), job_(job) {
        if (message.text.side != Side::None) {
            progress.side = message.text.side;
        }
    }

    void take() {
        switch (message_.text.step) {
            case Step::RouteChosen:
                companion().route = message_.text.route;
                break;
            case Step::Running:
                companion().origin = Origin::Running;
                attempt().reached = true;
                break;
            case Step::Path:
                attempt().path = true;
                break;
            case Step::Launching:
                attempt().launching = true;
                companion().origin = Origin::Started;
                break;
            case Step::LaunchTrue:
                reached();
                break;
            case Step::LaunchFalse:
                notReached();
                break;
            default:
                takeFailure();
                break;
        }
    }

  private:
    Companion& companion() { return job_.at(progress_.side); }
    StartAttempt& attempt() { return progress_.at(progress_.side); }

    void find(FindingId id, std::string detail = {}) {
        job_.add({id, line_, progress_.side, std::move(detail)});
        attempt().explained = true;
    }

    void fail(FindingId id, std::string detail = {}) {
        find(id, std::move(detail));
        companion().origin = Origin::NotReached;
    }

    void takeFailure() {
        switch (message_.text.step) {
            case Step::PrinterNotOpened:
                return fail(FindingId::PrinterNotOpened, job_.printer);
            case Step::NoPrefixData:
                return fail(FindingId::NoPrefixData, job_.printer);
            case Step::CreateProcessFailed:
                return fail(FindingId::StartFailed, code(message_.value));
            case Step::AsUserFailed:
                return fail(FindingId::StartAsUserFailed, code(message_.value));
            case Step::StartFailed:
                return explainSilence();
            case Step::NoModuleName:
                job_.add({FindingId::NoModuleName, line_, Side::None, {}});
                return;
            default:
                takeStart();
        }
    }

    void takeStart() {
        switch (message_.text.step) {
            case Step::UserToken:
                return takeToken();
            case Step::StartByWinExec:
                attempt().winExec = true;
                companion().start = Start::WinExec;
                break;
            case Step::StartAsUser:
                attempt().asUser = true;
                companion().start = attempt().token ? Start::AsUser : Start::AsSpooler;
                break;
            case Step::CreateProcess:
                companion().start = Start::CreateProcess;
                break;
            case Step::WindowAfterStart:
                return takeWindow();
            case Step::PipeReady:
                return takePipe();
            case Step::Window9xFound:
                return takeWindow9x();
            case Step::Window9xSearched:
                return takeSearch9x();
            default:
                break;
        }
    }

    void takeToken() {
        attempt().token = !message_.value.starts_with('0');
        constexpr std::string_view label = "lastError=";
        const std::size_t at = message_.value.find(label);
        if (!attempt().token && at != std::string_view::npos) {
            job_.add({FindingId::NoUserToken, line_, progress_.side,
                      code(message_.value.substr(at + label.size()))});
        }
    }

    void takeWindow() {
        Companion& target = companion();
        target.origin = Origin::Started;
        if (target.start == Start::None) {
            target.start = Start::WinExec;
        }
        // The start itself succeeded, whatever becomes of the window.
        attempt().reached = true;
        if (message_.value.empty()) {
            find(FindingId::NoWindowYet);
            return;
        }
        target.handle = message_.value;
    }

    void takePipe() {
        if (message_.value == invalidHandle) {
            return fail(FindingId::PipeNotMade);
        }
        if (message_.value.empty()) {
            return explainSilence();
        }
        companion().handle = message_.value;
        attempt().reached = true;
    }

    void takeWindow9x() {
        companion().route = Route::Window9x;
        if (!message_.value.empty()) {
            companion().origin = Origin::Running;
            found9x(message_.value);
        }
    }

    void takeSearch9x() {
        const std::size_t end = message_.value.find(attempts);
        const std::string_view handle = message_.value.substr(0, end);
        if (handle.empty()) {
            return fail(FindingId::WindowNotFound);
        }
        companion().origin = Origin::Started;
        found9x(handle);
    }

    void found9x(std::string_view handle) {
        companion().handle = handle;
        attempt().reached = true;
        // The next lines are NEMB's, which the first of them does not say.
        progress_.side = Side::Nemb;
    }

    // The start ended without a word: what was tried last is what failed.
    void explainSilence() {
        const StartAttempt& now = attempt();
        if (now.explained || now.reached) {
            companion().origin = now.reached ? companion().origin : Origin::NotReached;
            return;
        }
        fail(now.token && !now.asUser ? FindingId::NoEnvironment : FindingId::NotStarted);
    }

    void reached() {
        job_.launch.result = LaunchResult::Reached;
        if (const auto tick = leadingNumber(message_.value)) {
            job_.time.startTick(static_cast<std::uint32_t>(*tick));
        }
        // A window that was found at once is not logged.
        for (Companion* target : {&job_.dral, &job_.nemb}) {
            if (target->route == Route::Window && target->origin != Origin::Started) {
                target->origin = Origin::Running;
            }
        }
    }

    void notReached() {
        job_.launch.result = LaunchResult::NotReached;
        progress_.side = Side::Dral;
        if (attempt().path) {
            explainSilence();
        }
        const bool nembWasNext = job_.nemb.route != Route::None;
        const bool dralIsWhy = attempt().explained;
        progress_.side = Side::Nemb;
        if (nembWasNext && !dralIsWhy) {
            explainSilence();
        }
    }

    const Message& message_;
    std::uint64_t line_;
    LaunchProgress& progress_;
    Job& job_;
};

}  // namespace

void takeLaunchStep(const Message& message, std::uint64_t line, LaunchProgress& progress,
                    Job& job) {
    LaunchStep(message, line, progress, job).take();
}

}  // namespace vok::log
