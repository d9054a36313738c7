// The account as one page with a picture of the jobs over time.
#ifndef VOK_LOG_HTML_OUTPUT_H
#define VOK_LOG_HTML_OUTPUT_H

#include <cstdint>
#include <deque>
#include <string>

#include "json_output.h"

namespace vok::log {

// Keeps the jobs that the page shows: no more than it can show, those with problems first.
class HtmlOutput final : public Sink {
  public:
    // No more than so many bytes of jobs are kept, however few jobs these are: log lines go first.
    static constexpr std::size_t maxBytes = std::size_t{20} * 1024 * 1024;

    HtmlOutput(Writer& writer, std::size_t maxJobs, bool problemsOnly);
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    struct PageJob {
        std::string account;     // an object that is not closed yet
        std::deque<char> lines;  // in small pieces, which leave no holes when they go
        std::uint64_t lineCount = 0;
        std::uint64_t linesLeftOut = 0;

        std::size_t bytes() const { return account.size() + lines.size(); }
    };

    void makeRoom();
    void writeData(const Summary& summary);
    std::string limitText(const Summary& summary) const;

    Writer& writer_;
    std::size_t maxJobs_;
    bool problemsOnly_;
    bool clock_ = false;
    std::size_t bytes_ = 0;
    std::uint64_t leftOut_ = 0;
    std::uint64_t problemsLeftOut_ = 0;
    std::size_t withoutLines_ = 0;  // so many of the others
    std::deque<PageJob> problems_;
    std::deque<PageJob> others_;
};

}  // namespace vok::log

#endif
