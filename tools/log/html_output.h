// The account as one page with a picture of the jobs over time.
#ifndef VOK_LOG_HTML_OUTPUT_H
#define VOK_LOG_HTML_OUTPUT_H

#include <array>
#include <cstdint>
#include <deque>
#include <string>

#include "json_output.h"

namespace vok::log {

// How many jobs began in each of equal stretches of time. Of fixed size: the stretches grow.
class JobStrip {
  public:
    static constexpr std::size_t size = 256;

    // A time, or a line number where the log has no clock.
    void add(std::int64_t time, bool problem);
    JsonValue toJson() const;

  private:
    void growRight();
    void growLeft();

    struct Count {
        std::uint64_t total = 0;
        std::uint64_t problems = 0;
    };

    bool empty_ = true;
    std::int64_t start_ = 0;
    std::int64_t width_ = 100;
    std::array<Count, size> counts_ = {};
};

// Keeps the jobs that the page shows: no more than it can show, those with problems first.
class HtmlOutput final : public Sink {
  public:
    // No more than so many bytes of jobs are kept, however few jobs these are.
    static constexpr std::size_t maxBytes = std::size_t{20} * 1024 * 1024;

    HtmlOutput(Writer& writer, std::size_t maxJobs, bool problemsOnly);
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    bool full() const;
    void writeData(const Summary& summary);
    std::string limitText(const Summary& summary) const;

    Writer& writer_;
    std::size_t maxJobs_;
    bool problemsOnly_;
    bool clock_ = false;
    std::size_t bytes_ = 0;
    std::uint64_t leftOut_ = 0;
    std::uint64_t problemsLeftOut_ = 0;
    JobStrip byTime_;
    JobStrip byLine_;
    std::deque<std::string> problems_;
    std::deque<std::string> others_;
};

}  // namespace vok::log

#endif
