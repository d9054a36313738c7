// One job as the log tells it.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "findings.h"
#include "messages.h"
#include "record.h"
#include "time_split.h"

namespace vok::log {

struct Finding {
    FindingId id = FindingId::LaunchFailed;
    std::uint64_t line = 0;
    Side side = Side::None;
    std::string detail;
    std::size_t file = 0;
};

enum class Delivery : std::uint8_t {
    Open,         // no answer so far
    Answered,     // the companion replied
    NotSent,      // the library had no need to send it
    Undelivered,  // the companion could not be reached
    NoAnswer,     // sent, and no answer is in the log
    Unseen,       // a call of which only entry and exit were logged
};
template <>
inline constexpr const char* words<Delivery>[] = {"open",        "answered",  "not sent",
                                                  "undelivered", "no answer", "not logged"};

enum Reply : std::int64_t { NoPrint = 0, YesPrint = 1, WaitPrint = 2 };
template <>
inline constexpr const char* words<Reply>[] = {"NOPRINT", "YESPRINT", "WAITPRINT"};

constexpr bool isKnown(std::optional<std::int64_t> reply) {
    return reply >= NoPrint && reply <= WaitPrint;
}

// Where something stands in the log.
struct Place {
    Time start = noTime;
    Time end = noTime;
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;
};

// One call for one event to one companion.
struct Exchange : Place {
    Side side = Side::None;
    Event event = Event::None;
    Route route = Route::None;
    Delivery delivery = Delivery::Open;
    bool ownMessage = false;  // a message of the print processor's own, not an event
    std::optional<std::int64_t> reply;
    std::uint64_t asks = 0;   // more than one where the library itself asked again
    std::uint64_t waits = 0;  // WAITPRINT answers
    Time asked = noTime;
    Time answered = noTime;
    std::size_t file = 0;  // of the first line
    bool notable = false;  // failed, was slow, or came after a long pause of the host

    Duration answerTime() const { return between(asked, answered); }
    // The job's end.
    bool ends() const { return event == Event::Close || event == Event::Cancel; }
};

// Events that are not listed one by one.
struct ExchangeGap : Place {
    std::uint64_t count = 0;
    std::uint64_t yes = 0;
    std::uint64_t no = 0;
    std::uint64_t wait = 0;  // ended with WAITPRINT
    std::uint64_t other = 0;
    std::uint64_t waits = 0;  // WAITPRINT answers

    void add(const Exchange& exchange);
};

enum class Origin : std::uint8_t { Unknown, Running, Started, NotReached };
template <>
inline constexpr const char* words<Origin>[] = {"?", "found running", "started", "not reached"};

enum class Start : std::uint8_t { None, AsUser, AsSpooler, WinExec, CreateProcess };
template <>
inline constexpr const char* words<Start>[] = {"", "as the user", "with the spooler's token",
                                               "by WinExec", "by CreateProcess"};

struct Companion {
    Route route = Route::None;
    Origin origin = Origin::Unknown;
    Start start = Start::None;
    std::string handle;
    std::uint64_t events = 0;
    std::uint64_t waits = 0;
    std::uint64_t firstWaitLine = 0;
    std::int64_t answerTotal = 0;  // of the answers whose time is known
    bool opened = false;           // answered OPENJOB with anything but WAITPRINT
    bool ended = false;            // has heard of the close or cancel
    bool busy = false;             // answered WAITPRINT last
};

enum class LaunchResult : std::uint8_t { Missing, Open, Reached, NotReached };
template <>
inline constexpr const char* words<LaunchResult>[] = {
    "not in the log", "unfinished", "both found or started", "not both found or started"};

struct Launch : Place {
    LaunchResult result = LaunchResult::Missing;
    std::uint64_t attempts = 0;
};

enum class JobEnd : std::uint8_t {
    Printed,
    Refused,
    Cancelled,
    Unfinished,  // its thread turned to another job
    Open,        // the log ends before it
    Mixed,       // can't be told apart from others
    NoEvents,
};
template <>
inline constexpr const char* words<JobEnd>[] = {"printed", "refused", "cancelled", "unfinished",
                                                "open",    "mixed",   "no events"};

struct JobLine {
    std::uint64_t number = 0;
    std::string text;
    bool notable = false;
};

struct LineGap {
    std::uint64_t count = 0;

    void add(const JobLine&) { ++count; }
};

// The first, the last and the notable of many things, and what was left out between them. Of
// bounded size, whatever is added.
// T has a member `notable`; a Gap takes what is left out by add(const T&) and counts it in `count`.
template <typename T, typename Gap, std::size_t headSize, std::size_t notableSize,
          std::size_t tailSize>
class KeptList {
  public:
    void add(T item) {
        ++size_;
        if (front_.size() < headSize) {
            front_.emplace_back(std::move(item));
            return;
        }
        tail_.push_back(std::move(item));
        if (tail_.size() > tailSize) {
            pass(std::move(tail_.front()));
            tail_.pop_front();
        }
    }

    std::uint64_t omitted() const { return omitted_; }
    std::uint64_t size() const { return size_; }

    // The latest things, to be changed.
    std::deque<T>& latest() { return tail_; }

    template <typename OfItem, typename OfGap>
    void forEach(OfItem ofItem, OfGap ofGap) const {
        for (const auto& entry : front_) {
            if (const T* item = std::get_if<T>(&entry)) {
                ofItem(*item);
            } else {
                ofGap(std::get<Gap>(entry));
            }
        }
        for (const T& item : tail_) {
            ofItem(item);
        }
    }

    template <typename OfItem>
    void forEach(OfItem ofItem) const {
        forEach(ofItem, [](const Gap&) {});
    }

  private:
    void pass(T item) {
        if (item.notable && notable_ < notableSize) {
            ++notable_;
            front_.emplace_back(std::move(item));
            return;
        }
        if (front_.empty() || !std::holds_alternative<Gap>(front_.back())) {
            front_.emplace_back(Gap());
        }
        std::get<Gap>(front_.back()).add(item);
        ++omitted_;
    }

    std::vector<std::variant<T, Gap>> front_;
    std::deque<T> tail_;
    std::size_t notable_ = 0;
    std::uint64_t size_ = 0;
    std::uint64_t omitted_ = 0;
};

// A line that another job was given may have been this one's.
struct Doubt {
    std::uint64_t job = 0;
    std::string reply;  // the answer in it; empty for anything else
};

struct Job : Place {
    static constexpr std::size_t maxFindings = 24;

    std::uint64_t number = 0;
    std::size_t file = 0;  // index of the log file
    std::string printer;
    std::string port;
    std::optional<std::uint32_t> processId;
    std::optional<std::uint32_t> threadId;
    std::uint64_t lastRecord = 0;  // counted over all files
    TimeSplit time;
    std::uint32_t lane = 0;  // a place of its own among the jobs that run at the same time
    Launch launch;
    Companion dral;
    Companion nemb;
    std::uint64_t pages = 0;
    bool closed = false;
    bool cancelled = false;
    bool hasDetails = false;
    bool hasTraces = false;
    bool atLogEnd = false;    // the log ended before the job did
    bool overdue = false;     // and had gone on for too long without it
    bool growing = false;     // the log does
    bool standing = false;    // told before it is over for good
    Duration silent;          // how long the job had said nothing then
    Duration left;            // or when its thread turned to another
    std::uint64_t told = 0;   // the last record when it was told while the log grew
    std::uint64_t mixed = 0;  // so many jobs can't be told apart, this one among them
    std::uint64_t group = 0;  // of those; the job's own number while there are none
    bool shared = false;      // others ran beside it, and no numbers tell them apart
    std::vector<Doubt> doubts;
    std::optional<Exchange> open;     // the call that is not over yet
    std::optional<Exchange> slowest;  // its time is not counted before the job is over
    KeptList<Exchange, ExchangeGap, 100, 300, 50> exchanges;
    KeptList<JobLine, LineGap, 80, 400, 60> lines;
    std::vector<Finding> findings;  // the first of each kind always
    std::array<std::uint64_t, 64> findingTimes = {};

    Companion& at(Side side) { return side == Side::Nemb ? nemb : dral; }
    const Companion& at(Side side) const { return side == Side::Nemb ? nemb : dral; }
    bool finished() const { return dral.ended && nemb.ended; }
    // What a companion has heard, with the call that is not written down yet.
    bool hasOpened(Side side) const;
    bool hasEnded(Side side) const;
    // Nothing more is to come but what follows an answer.
    bool isThrough() const { return hasEnded(Side::Dral) && hasEnded(Side::Nemb); }
    bool pending() const { return open && open->delivery == Delivery::Open; }
    // Nothing more of it is to come.
    bool isOver() const;
    // Without what the clock was set by meanwhile.
    Duration answerTime(const Exchange& exchange) const;
    std::uint64_t times(FindingId id) const { return findingTimes[static_cast<std::size_t>(id)]; }
    bool has(FindingId id) const { return times(id) > 0; }
    void add(Finding finding);
    // The first of the kind; null when there is none.
    const Finding* find(FindingId id) const;
    std::uint64_t findingsOmitted() const;

    JobEnd result() const;
    // From the first to the last record.
    Duration duration() const { return time.total(); }
    Weight weight() const;
    // What went wrong first: the first problem, else the first warning or note.
    const Finding* firstFailure() const;
};

// Adds what the job as a whole shows, once it is over or the log is.
void judge(Job& job);
// Takes from the job what is only a guess, now that it can't be told apart from others. What a
// single line says by itself is handed over.
std::vector<Finding> dropGuesses(Job& job);

// "open: silent for 2 h 55 min when the log ends", or "so far" where it grows: what is known of a
// job that has no end.
std::string resultText(const Job& job);
std::string replyText(std::optional<std::int64_t> reply);

}  // namespace vok::log
