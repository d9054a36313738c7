#include "host.h"

#include <fmt/format.h>
#include <vok/companion.h>

#include <algorithm>
#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/machine.h"
#include "common/other_session.h"
#include "common/system.h"
#include "spooler_stand_in.h"

namespace vok::check {

namespace {

std::string temporaryFolder() {
    std::array<char, MAX_PATH> path{};
    GetTempPathA(static_cast<DWORD>(path.size()), path.data());
    return fmt::format("{}vok-companion-check-{}", path.data(), GetCurrentProcessId());
}

bool hasEnded(HANDLE process) {
    return WaitForSingleObject(process, 0) != WAIT_TIMEOUT;
}

DWORD WINAPI run(void* argument) {
    (*static_cast<const std::function<void()>*>(argument))();
    return 0;
}

// False when the answer was not yes within the limit. The end of `thread`, where there is one, is
// seen at once.
bool waitUntil(DWORD limit, const std::function<bool()>& isTrue, HANDLE thread = nullptr) {
    constexpr DWORD pause = 10;
    const DWORD start = GetTickCount();
    while (!isTrue()) {
        if (GetTickCount() - start >= limit) {
            return false;
        }
        MsgWaitForMultipleObjects(thread == nullptr ? 0 : 1, &thread, FALSE, pause, QS_ALLINPUT);
        MSG message = {};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            DispatchMessageA(&message);
        }
    }
    return true;
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

// Runs the call on a thread of its own, while this thread serves its windows. One that has not
// returned within `limit` milliseconds is made to, and that there was no answer is the fault.
void callWithin(DWORD limit, const std::string& pipeName, const std::function<void()>& call) {
    const HANDLE thread =
        CreateThread(nullptr, 0, run, const_cast<std::function<void()>*>(&call), 0, nullptr);
    if (thread == nullptr) {
        throw std::runtime_error("no thread can be made");
    }
    const auto ended = [thread] { return hasEnded(thread); };
    const bool inTime = waitUntil(limit, ended, thread);
    if (!inTime) {
        freeCall(pipeName);
        // What the call uses goes with this frame, so that there is no way on without its end.
        waitUntil(INFINITE, ended, thread);
    }
    CloseHandle(thread);
    require(inTime, fmt::format("no answer within {} ms", limit));
}

}  // namespace

Host::Host(const Options& options, sample::Identity identity)
    : options_(options), identity_(std::move(identity)), folder_(temporaryFolder()) {}

Host::~Host() {
    endCompanions();
    library_.unload();
    DeleteFileA((folder_ + "\\" + prefix() + "vok.dll").c_str());
    RemoveDirectoryA(folder_.c_str());
}

void Host::prepare() {
    const std::string source = options_.library.empty() ? tools::folderOf(tools::pathOf(nullptr)) +
                                                              "\\" VOK_MODEL_PREFIX "vok.dll"
                                                        : options_.library;
    CreateDirectoryA(folder_.c_str(), nullptr);
    // The library takes the model's prefix from its own file name.
    const std::string copy = folder_ + "\\" + prefix() + "vok.dll";
    if (CopyFileA(source.c_str(), copy.c_str(), FALSE) == 0) {
        throw std::runtime_error(fmt::format("{} can't be copied to {}: {}", source, copy,
                                             tools::errorText(GetLastError())));
    }
    if (const DWORD error = library_.load(folder_, prefix()); error != ERROR_SUCCESS) {
        throw std::runtime_error(copy + " can't be loaded: " + tools::errorText(error));
    }
    std::array<char, MAX_PATH> companion{};
    GetFullPathNameA(options_.companion.c_str(), static_cast<DWORD>(companion.size()),
                     companion.data(), nullptr);
    const std::string missing = standIn(library_.module(), companion.data(), prefix());
    if (!missing.empty()) {
        throw std::runtime_error(copy + " does not call " + missing);
    }
}

void Host::takeRoute(Route route) {
    route_ = route;
    // The library takes the pipe route when the sessions differ.
    const DWORD console = WTSGetActiveConsoleSessionId();
    const DWORD other = console == 0 ? 1 : 0;
    sample::moveToSession(library_.module(), route == Route::Pipe ? other : console);
}

std::string Host::newPrinter() {
    return fmt::format("Check {}-{}", GetCurrentProcessId(), ++printers_);
}

std::string Host::title(sample::Role role, const std::string& printer) const {
    if (role == sample::Role::Nemb) {
        return prefix() + VOK_NEMB_TITLE + printer;
    }
    return (sample::is9x() ? "" : prefix()) + VOK_DRAL_TITLE + printer;
}

std::string Host::windowClass(sample::Role role, const std::string& printer) const {
    return role == sample::Role::Dral ? VOK_DRAL_HIDDEN + sample::titleSuffix(printer)
                                      : prefix() + VOK_NEMB_TITLE;
}

std::string Host::pipeName(const std::string& printer) const {
    return (isDral() ? VOK_DRAL_PIPE : VOK_NEMB_PIPE) + printer;
}

void require(bool right, const std::string& fault) {
    if (!right) {
        throw Fault(fault);
    }
}

void inCase(const std::string& which, const std::function<void()>& steps) {
    try {
        steps();
    } catch (const Fault& fault) {
        throw Fault(which + fault.what());
    }
}

void await(DWORD limit, const std::string& fault, const std::function<bool()>& isTrue) {
    require(waitUntil(limit, isTrue), fmt::format("{} within {} ms", fault, limit));
}

void askWindow(DWORD limit, HWND window) {
    require(tools::answersMessages(window, limit),
            fmt::format("its window is there and answers no message within {} ms: the companion "
                        "does not serve it",
                        limit));
}

Job::Job(Host& host, std::string printer)
    : host_(host),
      printer_(std::move(printer)),
      partnerClass_(host.windowClass(host.partner(), printer_)),
      record_(printer_) {
    WNDCLASSA description = {};
    description.lpfnWndProc = DefWindowProcA;
    description.hInstance = GetModuleHandleA(nullptr);
    description.lpszClassName = partnerClass_.c_str();
    RegisterClassA(&description);
    partner_ = CreateWindowExA(0, partnerClass_.c_str(),
                               host.title(host.partner(), printer_).c_str(), WS_OVERLAPPED, 0, 0, 1,
                               1, nullptr, nullptr, description.hInstance, nullptr);
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
        require(reached && record_->dralMode == VOK_MODE_PIPE,
                "the library made no pipes: it can't start the companion");
        await(limit, host_.pipeName(printer_) + " was not opened", [this] {
            DWORD available = 0;
            return PeekNamedPipe(pipe(), nullptr, 0, nullptr, &available, nullptr) != 0;
        });
        return;
    }
    const auto window = [this] { return FindWindowA(nullptr, title().c_str()); };
    await(limit, "no window '" + title() + "'", [&window] { return window() != nullptr; });
    askWindow(limit, window());
    require(reached || launchOnce(), "the library does not find the companion by its window");
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
    callWithin(host_.limit(), host_.pipeName(printer_), [&] { reply = call(event); });
    require(exchange().happened, "the library could not reach the companion");
    require(host_.route() != Route::Pipe || exchange().bytes != 0,
            "the companion closed the pipe instead of answering");
    require(!std::ranges::all_of(startedCompanions(), hasEnded), "the companion ended");
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
