// One job as the log tells it.
#ifndef VOK_LOG_JOB_H
#define VOK_LOG_JOB_H

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "findings.h"
#include "head_tail.h"
#include "messages.h"
#include "record.h"

namespace vok::log {

// Unknown durations are not zero.
using Duration = std::optional<std::int64_t>;

// None where one of the times is unknown or the clock went back between them.
Duration between(Time start, Time end);

struct Finding {
    FindingId id = FindingId::LaunchFailed;
    std::uint64_t line = 0;
    Side side = Side::None;
    std::string detail;
};

enum class Delivery : std::uint8_t {
    Open,         // no answer so far
    Answered,     // the companion replied
    NotSent,      // the library had no need to send it
    Undelivered,  // the companion could not be reached
    NoAnswer,     // sent, and no answer is in the log
    Unseen,       // a call of which only entry and exit were logged
};

enum Reply : std::int64_t { NoPrint = 0, YesPrint = 1, WaitPrint = 2 };

// One call for one event to one companion.
struct Exchange {
    Side side = Side::None;
    Event event = Event::None;
    Route route = Route::None;
    Delivery delivery = Delivery::Open;
    bool ownMessage = false;  // a message of the print processor's own, not an event
    std::optional<std::int64_t> reply;
    std::uint64_t asks = 0;   // more than one where the library itself asked again
    std::uint64_t waits = 0;  // WAITPRINT answers
    Time start = noTime;
    Time asked = noTime;
    Time answered = noTime;
    Time end = noTime;
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;

    Duration answerTime() const { return between(asked, answered); }
};

enum class Origin : std::uint8_t { Unknown, Running, Started, NotReached };
enum class Start : std::uint8_t { None, AsUser, AsSpooler, WinExec, CreateProcess };

struct Companion {
    Route route = Route::None;
    Origin origin = Origin::Unknown;
    Start start = Start::None;
    std::string handle;
    std::uint64_t events = 0;
    std::uint64_t waits = 0;
    std::int64_t answerTotal = 0;  // of the answers whose time is known
    bool opened = false;           // answered OPENJOB with anything but WAITPRINT
    bool ended = false;            // has heard of the close or cancel
    std::optional<Exchange> last;
};

enum class LaunchResult : std::uint8_t { Missing, Open, Reached, NotReached };

struct Launch {
    LaunchResult result = LaunchResult::Missing;
    std::uint64_t attempts = 0;
    Time start = noTime;
    Time end = noTime;
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;
};

enum class JobEnd : std::uint8_t { Printed, Refused, Cancelled, Unfinished, NoEvents };

struct JobLine {
    std::uint64_t number = 0;
    std::string text;
};

struct Job {
    static constexpr std::size_t maxFindings = 24;

    std::uint64_t number = 0;
    std::size_t file = 0;  // index of the log file
    std::string printer;
    std::string port;
    std::optional<std::uint32_t> processId;
    std::optional<std::uint32_t> threadId;
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;
    std::uint64_t lastRecord = 0;  // counted over all files
    Time start = noTime;
    Time end = noTime;
    std::optional<std::uint32_t> startTick;
    std::optional<std::uint32_t> endTick;
    std::uint32_t lane = 0;  // a place of its own among the jobs that run at the same time
    Launch launch;
    Companion dral;
    Companion nemb;
    std::uint64_t pages = 0;
    bool closed = false;
    bool cancelled = false;
    bool hasDetails = false;
    std::optional<Exchange> open;  // the call that is not over yet
    HeadTail<Exchange, 150, 50> exchanges;
    HeadTail<JobLine, 80, 40> lines;
    std::vector<Finding> findings;
    std::uint64_t findingsOmitted = 0;
    std::bitset<64> findingIds;

    Companion& at(Side side) { return side == Side::Nemb ? nemb : dral; }
    const Companion& at(Side side) const { return side == Side::Nemb ? nemb : dral; }
    bool finished() const { return dral.ended && nemb.ended; }
    bool has(FindingId id) const { return findingIds[static_cast<std::size_t>(id)]; }
    void add(Finding finding);

    JobEnd result() const;
    // From the first to the last record; from the ticks of launch and close where no clock is.
    Duration duration() const;
    Weight weight() const;
    // What went wrong first: the first problem, else the first warning or note.
    const Finding* firstFailure() const;
};

const char* toText(JobEnd end);
const char* toText(Origin origin);
const char* toText(Start start);
const char* toText(Delivery delivery);
const char* toText(LaunchResult result);
std::string replyText(std::optional<std::int64_t> reply);

}  // namespace vok::log

#endif
