// The account as trace events, for viewers of Chrome's trace format.
#ifndef VOK_LOG_TRACE_OUTPUT_H
#define VOK_LOG_TRACE_OUTPUT_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "json_output.h"

namespace vok::log {

// Every job is a slice in a lane of its process, with the launch and the events inside. Where the
// log has no clock a line takes the place of a millisecond, counted from the last time before it.
// Written as the log is read.
class TraceOutput final : public Sink {
  public:
    explicit TraceOutput(Writer& writer);
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    // Lanes that are remembered at once.
    static constexpr std::size_t maxLanes = 4096;

    struct Span {
        std::int64_t start;  // microseconds
        std::int64_t duration;
    };

    struct Slice {
        std::string name;
        const char* kind;
        Span span;
        JsonValue details;
    };

    Span spanOf(Time start, Time end, std::uint64_t firstLine, std::uint64_t lastLine);
    Slice wholeOf(const Job& job);
    std::vector<Slice> partsOf(const Job& job);
    void nameLane(const Job& job);
    void write(const Job& job, const Slice& slice);
    void write(const JsonValue& event);

    Writer& writer_;
    bool first_ = true;
    std::int64_t lastTime_ = 0;       // milliseconds
    std::uint64_t lastTimeLine_ = 0;  // its line
    // By process and lane; there since the lane was named.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::int64_t> laneEnds_;
};

}  // namespace vok::log

#endif
