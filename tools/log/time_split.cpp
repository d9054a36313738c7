#include "time_split.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace vok::log {

namespace {

// Milliseconds that the library sleeps after a close or cancel.
constexpr std::int64_t pauseLength = 1000;
// Records may be so much out of order; the clock and the tick counts differ by less.
constexpr std::int64_t tolerance = 2000;

}  // namespace

Duration between(Time start, Time end) {
    if (start == noTime || end == noTime || end < start) {
        return std::nullopt;
    }
    return end - start;
}

void TimeSplit::add(Phase phase, std::int64_t length, std::uint64_t line, std::size_t file) {
    times_[static_cast<std::size_t>(phase)] += length;
    total_ += length;
    if (phase == Phase::Host && length > longestHost_) {
        longestHost_ = length;
        longestHostLine_ = line;
    }
    if (!lost_ && length > suspect_.length) {
        suspect_ = {phase, length, line, file};
    }
}

void TimeSplit::advance(Time time, std::uint64_t line, std::size_t file) {
    if (time == noTime) {
        return;
    }
    std::int64_t length = last_ == noTime ? 0 : time - last_;
    if (length < -tolerance) {
        lost_ = true;
        suspect_ = {phase_, length, line, file};
    }
    last_ = length < 0 && length >= -tolerance ? last_ : time;
    length = std::max<std::int64_t>(length, 0);
    if (std::exchange(pausing_, false)) {
        const std::int64_t paused = std::min(length, pauseLength);
        add(Phase::Pause, paused, line, file);
        length -= paused;
    }
    add(phase_, length, line, file);
}

void TimeSplit::pauseThen(Phase after) {
    pausing_ = true;
    phase_ = after;
}

void TimeSplit::endTick(std::uint32_t tick) {
    endTick_ = tick;
    atEnd_ = total_;
}

void TimeSplit::settle() {
    if (!startTick_ || !endTick_ || last_ == noTime || jump_) {
        return;
    }
    // The tick counts are 32 bits wide and wrap.
    const std::int64_t ticks = *endTick_ - *startTick_;
    const std::int64_t tooMuch = atEnd_ - atBegin_ - ticks;
    const bool forward = !lost_ && tooMuch > tolerance && tooMuch <= suspect_.length + tolerance;
    const bool backward = lost_ && tooMuch <= 0;
    if (!forward && !backward) {
        return;
    }
    const std::int64_t change = forward ? std::min(tooMuch, suspect_.length) : tooMuch;
    times_[static_cast<std::size_t>(suspect_.phase)] -= change;
    total_ -= change;
    jump_ = ClockJump{suspect_.line, suspect_.file, forward ? change : suspect_.length + change};
    if (suspect_.phase == Phase::Host) {
        longestHost_ = 0;
        longestHostLine_ = 0;
    }
    lost_ = false;
}

Duration TimeSplit::total() const {
    if (lost_) {
        return std::nullopt;
    }
    if (last_ != noTime) {
        return total_;
    }
    return startTick_ && endTick_ ? Duration(*endTick_ - *startTick_) : std::nullopt;
}

bool TimeSplit::jumpedBetween(std::uint64_t first, std::uint64_t last) const {
    return jump_ && first < jump_->line && jump_->line <= last;
}

}  // namespace vok::log
