#include "job.h"

#include <vok/companion.h>

#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/machine.h"
#include "spooler_stand_in.h"
#include "watched_call.h"

namespace vok::check {

namespace {

// DRAL is found by its title under any class, on 9x under that of its hidden window; NEMB by both.
std::string partnerClass(const Host& host, const std::string& printer) {
    if (host.isDral()) {
        return host.prefix() + VOK_NEMB_TITLE;
    }
    return sample::is9x() ? VOK_DRAL_HIDDEN + sample::titleSuffix(printer) : host.prefix() + "DRAL";
}

std::string partnerTitle(const Host& host, const std::string& printer) {
    const sample::Role role = host.isDral() ? sample::Role::Nemb : sample::Role::Dral;
    return titleOf(role, host.prefix(), printer);
}

bool anyRuns() {
    for (const HANDLE process : startedCompanions()) {
        if (WaitForSingleObject(process, 0) == WAIT_TIMEOUT) {
            return true;
        }
    }
    return false;
}

// Makes a call return that waits for the companion: for its answer, or for it to open the pipe.
void freeCall(const std::string& pipeName) {
    endCompanions();
    const HANDLE pipe = CreateFileA(pipeName.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) {
        CloseHandle(pipe);
    }
}

}  // namespace

Job::Job(Host& host, std::string printer)
    : host_(host),
      printer_(std::move(printer)),
      partner_(partnerClass(host, printer_), partnerTitle(host, printer_)),
      record_(printer_) {}

bool Job::launchOnce() {
    record_.dropCompanions();
    return host_.calls().launch(printer_.c_str(), "LPT1:", record_.get()) != FALSE;
}

bool Job::companionHasOpened() {
    DWORD available = 0;
    return PeekNamedPipe(pipe(), nullptr, 0, nullptr, &available, nullptr) != 0;
}

std::string Job::launch() {
    const bool reached = launchOnce();
    if (host_.route() == Route::Pipe) {
        if (!reached || record_->dralMode != VOK_MODE_PIPE) {
            return "the library made no pipes: it can't start the companion";
        }
        const bool opened = waitUntil(host_.limit(), [this] { return companionHasOpened(); });
        return opened ? "" : host_.pipeName(printer_) + " was not opened" + within(host_.limit());
    }
    const std::string title = host_.title(printer_);
    const auto window = [&title] { return FindWindowA(nullptr, title.c_str()); };
    if (!waitUntil(host_.limit(), [&window] { return window() != nullptr; })) {
        return "no window '" + title + "'" + within(host_.limit());
    }
    const std::string silent = askWindow(host_.limit(), window());
    if (!silent.empty() || reached) {
        return silent;
    }
    return launchOnce() ? "" : "the library does not find the companion by its window";
}

// The gate between the companions is the record's; the other one is taken to have accepted.
void Job::setFlagFor(DWORD event) {
    const DWORD flag = VOK_EPDOC_OPENJOB;
    if (host_.isDral() && event == SM_OPENJOB) {
        record_->epDoc &= ~flag;
    } else {
        record_->epDoc |= flag;
    }
}

LONG Job::call(DWORD event) {
    constexpr DWORD job = 1;
    constexpr DWORD page = 1;
    if (host_.isDral()) {
        const sample::DralBlock block{event, job, page, {}};
        return host_.calls().sendDral(&block, event, record_.get());
    }
    sample::NembBlock block{};
    sample::copyText(block.printer, sizeof block.printer, printer_);
    block.event = event;
    block.job = job;
    block.page = page;
    return host_.calls().sendNemb(&block, event, record_.get());
}

std::string Job::sendOnce(DWORD event, LONG& reply) {
    forgetExchange();
    setFlagFor(event);
    const std::string name = sample::eventName(event);
    const bool answered = callWithin(
        host_.limit(), [&] { reply = call(event); },
        [this] { freeCall(host_.pipeName(printer_)); });
    if (!answered) {
        return name + ": no answer" + within(host_.limit());
    }
    const Exchange exchange = lastExchange();
    if (!exchange.happened) {
        return name + ": the library could not reach the companion";
    }
    if (host_.route() == Route::Pipe && exchange.bytes == 0) {
        return name + ": the companion closed the pipe instead of answering";
    }
    return anyRuns() ? "" : name + ": the companion ended";
}

std::string Job::send(DWORD event) {
    LONG reply = WAITPRINT;
    std::string wrong;
    const auto goesOn = [&] {
        wrong = sendOnce(event, reply);
        replies_ += (replies_.empty() ? "" : ", ") + std::to_string(reply);
        return !wrong.empty() || reply != WAITPRINT;
    };
    if (!waitUntil(host_.limit(), goesOn)) {
        return sample::eventName(event) + ": nothing but WAITPRINT" + within(host_.limit());
    }
    return wrong;
}

std::string Job::run() {
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_STARTPAGE, SM_STARTPAGE, SM_CLOSEJOB}) {
        std::string wrong = send(event);
        if (!wrong.empty()) {
            return wrong;
        }
    }
    return {};
}

std::string Job::launchAndRun() {
    const std::string wrong = launch();
    return wrong.empty() ? run() : wrong;
}

}  // namespace vok::check
