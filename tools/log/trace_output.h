// The account as trace events, for viewers of Chrome's trace format.
#ifndef VOK_LOG_TRACE_OUTPUT_H
#define VOK_LOG_TRACE_OUTPUT_H

#include <cstdint>
#include <set>
#include <string>
#include <utility>

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
    // Names of lanes beyond this many are left to the viewer.
    static constexpr std::size_t maxNames = 4096;

    struct Span {
        std::int64_t start;  // microseconds
        std::int64_t duration;
    };

    Span spanOf(Time start, Time end, std::uint64_t firstLine, std::uint64_t lastLine);
    void slice(const Job& job, const std::string& name, const char* kind, const Span& span,
               JsonValue details);
    void nameLane(const Job& job);
    void writeEvents(const Job& job);
    void write(const JsonValue& event);

    Writer& writer_;
    bool first_ = true;
    std::int64_t lastTime_ = 0;       // milliseconds
    std::uint64_t lastTimeLine_ = 0;  // its line
    std::set<std::pair<std::uint32_t, std::uint32_t>> named_;
};

}  // namespace vok::log

#endif
