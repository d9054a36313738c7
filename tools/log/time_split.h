// Where a job's time went. Every stretch between two of its records is given to one phase, so the
// phases add up to the whole.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "record.h"

namespace vok::log {

// Unknown durations are not zero.
using Duration = std::optional<std::int64_t>;

// None where one of the times is unknown or the clock went back between them.
Duration between(Time start, Time end);

enum class Phase : std::uint8_t {
    Launch,
    Startup,  // waiting for a companion that is still starting
    Dral,     // until DRAL has answered
    Nemb,
    Wait,   // the companion asked for it by WAITPRINT
    Pause,  // the library's own sleeps
    Host,   // between two calls
};

struct ClockJump {
    std::uint64_t line = 0;  // the first with the new time
    std::size_t file = 0;
    std::int64_t ms = 0;
};

class TimeSplit {
  public:
    static constexpr std::size_t phases = 7;

    // The job was in `next` since the record before and is at this time now.
    void advance(Time time, std::uint64_t line, std::size_t file);
    void enter(Phase next) { phase_ = next; }
    // The library sleeps for a second, and is in `after` then.
    void pauseThen(Phase after);

    // The tick counts that the library writes when a launch begins and where the job ends.
    void beginTick() { atBegin_ = total_; }
    void startTick(std::uint32_t tick) { startTick_ = tick; }
    void endTick(std::uint32_t tick);
    // Believes the tick counts where the clock was set in between.
    void settle();

    std::int64_t at(Phase phase) const { return times_[static_cast<std::size_t>(phase)]; }
    const std::array<std::int64_t, phases>& all() const { return times_; }
    // By the clock; where there is none, by the tick counts.
    Duration total() const;
    bool known() const { return last_ != noTime && !lost_; }
    std::int64_t longestHost() const { return longestHost_; }
    // The first line after it; 0 where there is none.
    std::uint64_t longestHostLine() const { return longestHostLine_; }
    // Milliseconds for which the host stands still and is called slow for it.
    static constexpr std::int64_t longPause = 60000;
    bool longPauseBefore(std::uint64_t line) const {
        return longestHost_ >= longPause && longestHostLine_ == line;
    }
    const std::optional<ClockJump>& jump() const { return jump_; }
    bool jumpedBetween(std::uint64_t first, std::uint64_t last) const;

  private:
    void add(Phase phase, std::int64_t length, std::uint64_t line, std::size_t file);

    struct Stretch {
        Phase phase = Phase::Host;
        std::int64_t length = 0;
        std::uint64_t line = 0;
        std::size_t file = 0;
    };

    std::array<std::int64_t, phases> times_ = {};
    std::int64_t total_ = 0;
    std::int64_t longestHost_ = 0;
    std::uint64_t longestHostLine_ = 0;
    Time last_ = noTime;
    Phase phase_ = Phase::Host;
    bool pausing_ = false;
    bool lost_ = false;  // the clock went back, and nothing says how much time went by
    Stretch suspect_;    // in which the clock went back, else the longest
    std::int64_t atBegin_ = 0;
    std::int64_t atEnd_ = 0;
    std::optional<std::uint32_t> startTick_;
    std::optional<std::uint32_t> endTick_;
    std::optional<ClockJump> jump_;
};

}  // namespace vok::log
