#include "job_driver.h"

#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace vok::sample {
namespace {

const char* modeName(DWORD mode) {
    switch (mode) {
        case VOK_MODE_PIPE:
            return "pipe";
        case VOK_MODE_WINDOW:
            return "message";
        default:
            return "message (9x)";
    }
}

std::string milliseconds(DWORD time) {
    return std::to_string(time) + " ms";
}

bool endsTheJob(DWORD event) {
    return event == SM_CLOSEJOB || event == SM_CANCELJOB;
}

}  // namespace

const char* toText(JobEnd end) {
    switch (end) {
        case JobEnd::Printed:
            return "printed";
        case JobEnd::Refused:
            return "refused";
        case JobEnd::Cancelled:
            return "cancelled";
        case JobEnd::Failed:
            return "failed";
    }
    return "";
}

JobDriver::JobDriver(const VokCalls& calls, JobHost& host, const JobTicket& ticket,
                     const JobLimits& limits)
    : calls_(calls), host_(host), ticket_(ticket), limits_(limits), record_(ticket.printer) {}

JobEnd JobDriver::run() {
    host_.say("job " + std::to_string(ticket_.id) + " '" + ticket_.document + "' for " +
              ticket_.printer + " at " + ticket_.port);
    JobEnd end = JobEnd::Failed;
    hasMemory([&] {
        launch();
        end = openAndCopy();
    });
    // A job that was refused half-way has to be ended towards both companions as well: that is
    // what makes the library let their pipes go.
    endJob(end == JobEnd::Printed ? SM_CLOSEJOB : SM_CANCELJOB);
    host_.say("job " + std::to_string(ticket_.id) + " " + toText(end));
    return end;
}

template <typename Part>
void JobDriver::hasMemory(Part part) {
    try {
        part();
    } catch (const std::bad_alloc&) {
        host_.say("memory ran out");
    }
}

void JobDriver::launch() {
    const DWORD start = host_.ticks();
    BOOL reached = FALSE;
    DWORD tries = 0;
    while (tries < limits_.launchTries && !host_.cancelled()) {
        ++tries;
        reached = calls_.launch(ticket_.printer.c_str(), ticket_.port.c_str(), record_.get());
        if (reached != FALSE)
            break;
        // Started, but without a window yet; it is there soon.
        record_.dropCompanions();
        host_.pause(limits_.launchPause);
    }
    // Even a launch that failed is followed by the events: the library's answers to them say
    // whether a job without companions may be printed.
    host_.say("launch: " + std::string(reached != FALSE ? "both reached" : "NOT both reached") +
              ", DRAL by " + modeName(record_->dralMode) + ", NEMB by " +
              modeName(record_->nembMode) + ", tries " + std::to_string(tries) + ", " +
              milliseconds(host_.ticks() - start));
}

JobEnd JobDriver::openAndCopy() {
    switch (tellBoth(SM_OPENJOB)) {
        case Answer::Refused:
            return JobEnd::Refused;
        case Answer::Cancelled:
            return JobEnd::Cancelled;
        case Answer::GoOn:
            break;
    }
    if (!host_.openPort())
        return JobEnd::Failed;
    return copyDocument();
}

JobEnd JobDriver::copyDocument() {
    PageSplitter splitter;
    std::vector<char> buffer(size_t{64} * 1024);
    for (;;) {
        if (host_.cancelled())
            return JobEnd::Cancelled;
        DWORD count = 0;
        if (!host_.read(buffer.data(), static_cast<DWORD>(buffer.size()), count))
            return JobEnd::Failed;
        if (count == 0)
            return splitter.inPage() ? endPage() : JobEnd::Printed;
        std::string_view chunk(buffer.data(), count);
        while (!chunk.empty()) {
            const JobEnd end = copyPiece(splitter.next(chunk));
            if (end != JobEnd::Printed)
                return end;
        }
    }
}

JobEnd JobDriver::copyPiece(const PagePiece& piece) {
    if (piece.startsPage) {
        ++page_;
        const Answer answer = tellBoth(SM_STARTPAGE);
        if (answer != Answer::GoOn)
            return answer == Answer::Refused ? JobEnd::Refused : JobEnd::Cancelled;
    }
    if (!host_.write(piece.bytes))
        return JobEnd::Failed;
    return piece.endsPage ? endPage() : JobEnd::Printed;
}

JobEnd JobDriver::endPage() {
    std::string account;
    const Answer answer = tell(Companion::Nemb, SM_ENDPAGE, account);
    host_.say(describe(SM_ENDPAGE) + ": DRAL not told, " + account);
    if (host_.cancelled())
        return JobEnd::Cancelled;
    return answer == Answer::Refused ? JobEnd::Refused : JobEnd::Printed;
}

/// Tells DRAL first and NEMB only if DRAL goes along.
JobDriver::Answer JobDriver::tellBoth(DWORD event) {
    std::string dral;
    std::string nemb = "NEMB not asked";
    Answer answer = tell(Companion::Dral, event, dral);
    if (answer == Answer::GoOn)
        answer = tell(Companion::Nemb, event, nemb);
    host_.say(describe(event) + ": " + dral + ", " + nemb);
    return answer;
}

/// Both companions hear that the job is over, whatever either answers. DRAL comes first, because on
/// the pipe route NEMB's close takes the OPENJOB flag away, without which DRAL is not told. On 9x
/// it is DRAL's close that takes the flag, so there NEMB comes first.
void JobDriver::endJob(DWORD event) {
    page_ = 0;
    const bool nembFirst = record_->dralMode == VOK_MODE_NONE;
    std::string dral;
    std::string nemb;
    const auto tellDral = [&] { tell(Companion::Dral, event, dral); };
    const auto tellNemb = [&] { tell(Companion::Nemb, event, nemb); };
    if (nembFirst)
        hasMemory(tellNemb);
    hasMemory(tellDral);
    if (!nembFirst)
        hasMemory(tellNemb);
    host_.say(describe(event) + ": " + dral + ", " + nemb);
}

/// Sends an event and, for as long as the companion is busy with the job, sends it again.
JobDriver::Answer JobDriver::tell(Companion companion, DWORD event, std::string& account) {
    const DWORD start = host_.ticks();
    account = companion == Companion::Dral ? "DRAL " : "NEMB ";
    LONG reply = WAITPRINT;
    for (DWORD tries = 1; tries <= limits_.waitTries; ++tries) {
        reply = sendOnce(companion, event);
        account += (tries > 1 ? ", " : "") + replyName(reply);
        if (reply != WAITPRINT || (!endsTheJob(event) && host_.cancelled()))
            break;
        if (tries < limits_.waitTries)
            host_.pause(limits_.waitPause);
    }
    account += " (" + milliseconds(host_.ticks() - start) + ")";
    if (!endsTheJob(event) && host_.cancelled())
        return Answer::Cancelled;
    // A companion that is still busy after all that has not accepted the job.
    return reply == NOPRINT || reply == WAITPRINT ? Answer::Refused : Answer::GoOn;
}

LONG JobDriver::sendOnce(Companion companion, DWORD event) {
    if (companion == Companion::Nemb) {
        NembBlock block{};
        copyText(block.printer, sizeof block.printer, ticket_.printer);
        copyText(block.document, sizeof block.document, ticket_.document);
        block.event = event;
        block.job = ticket_.id;
        block.page = page_;
        return calls_.sendNemb(&block, event, record_.get());
    }
    // On the pipe route the flag stands as soon as the opening was tried. When DRAL is asked again,
    // the job is not open yet.
    if (event == SM_OPENJOB)
        record_->epDoc &= ~static_cast<DWORD>(VOK_EPDOC_OPENJOB);
    const DralBlock block{event, ticket_.id, page_, {}};
    return calls_.sendDral(&block, event, record_.get());
}

std::string JobDriver::describe(DWORD event) const {
    return page_ == 0 ? eventName(event) : eventName(event) + " " + std::to_string(page_);
}

}  // namespace vok::sample
