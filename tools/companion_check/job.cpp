#include "job.h"

#include <fmt/format.h>
#include <vok/companion.h>

#include <algorithm>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/machine.h"
#include "spooler_stand_in.h"
#include "watched_call.h"

namespace vok::check {

namespace {

bool hasEnded(HANDLE process) {
    return WaitForSingleObject(process, 0) != WAIT_TIMEOUT;
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
      partnerClass_(host.windowClass(host.partner(), printer_)),
      record_(printer_) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcA;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = partnerClass_.c_str();
    RegisterClassA(&windowClass);
    partner_ = CreateWindowExA(0, partnerClass_.c_str(),
                               host.title(host.partner(), printer_).c_str(), WS_OVERLAPPED, 0, 0, 1,
                               1, nullptr, nullptr, windowClass.hInstance, nullptr);
}

Job::~Job() {
    DestroyWindow(partner_);
    UnregisterClassA(partnerClass_.c_str(), GetModuleHandleA(nullptr));
}

bool Job::launchOnce() {
    record_.dropCompanions();
    return host_.calls().launch(printer_.c_str(), "LPT1:", record_.get()) != FALSE;
}

void Job::launch() {
    const bool reached = launchOnce();
    const DWORD limit = host_.limit();
    if (host_.route() == Route::Pipe) {
        if (!reached || record_->dralMode != VOK_MODE_PIPE) {
            throw Fault("the library made no pipes: it can't start the companion");
        }
        await(limit, host_.pipeName(printer_) + " was not opened", [this] {
            DWORD available = 0;
            return PeekNamedPipe(pipe(), nullptr, 0, nullptr, &available, nullptr) != 0;
        });
        return;
    }
    const std::string title = host_.title(printer_);
    const auto window = [&title] { return FindWindowA(nullptr, title.c_str()); };
    await(limit, "no window '" + title + "'", [&window] { return window() != nullptr; });
    askWindow(limit, window());
    if (!reached && !launchOnce()) {
        throw Fault("the library does not find the companion by its window");
    }
}

LONG Job::call(DWORD event) {
    constexpr DWORD job = 1;
    constexpr DWORD page = 1;
    // The gate between the companions is the record's; the other one is taken to have accepted.
    record_->epDoc |= VOK_EPDOC_OPENJOB;
    if (host_.isDral()) {
        if (event == SM_OPENJOB) {
            record_->epDoc &= ~static_cast<DWORD>(VOK_EPDOC_OPENJOB);
        }
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

LONG Job::sendOnce(DWORD event) {
    exchange() = {};
    LONG reply = WAITPRINT;
    callWithin(
        host_.limit(), [&] { reply = call(event); },
        [this] { freeCall(host_.pipeName(printer_)); });
    if (!exchange().happened) {
        throw Fault("the library could not reach the companion");
    }
    if (host_.route() == Route::Pipe && exchange().bytes == 0) {
        throw Fault("the companion closed the pipe instead of answering");
    }
    if (std::ranges::all_of(startedCompanions(), hasEnded)) {
        throw Fault("the companion ended");
    }
    replies_ += (replies_.empty() ? "" : ", ") + std::to_string(reply);
    return reply;
}

void Job::send(DWORD event) {
    inCase(sample::eventName(event) + ": ", [&] {
        await(host_.limit(), "nothing but WAITPRINT", [&] { return sendOnce(event) != WAITPRINT; });
    });
}

void Job::run() {
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_STARTPAGE, SM_STARTPAGE, SM_CLOSEJOB}) {
        send(event);
    }
}

void Job::launchAndRun() {
    launch();
    run();
}

}  // namespace vok::check
