// The account for people: one line for each job, and what it all means.
#ifndef VOK_LOG_TABLE_OUTPUT_H
#define VOK_LOG_TABLE_OUTPUT_H

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "assembler.h"
#include "options.h"
#include "writer.h"

namespace vok::log {

class TableOutput final : public Sink {
  public:
    TableOutput(Writer& writer, const Options& options);
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    std::string rowOf(const Job& job) const;
    std::string rowOf(const std::string& file, std::span<const std::string> cells) const;
    bool isNews(const Job& job, const std::string& row);
    void writeCounts(const Summary& summary);
    void writeEvents(const Summary& summary);
    void writeFindings(const Summary& summary);
    void writeFinding(const FindingText& text, const FindingCounts& counts, const Summary& summary);

    Writer& writer_;
    const Options& options_;
    bool headed_ = false;
    std::map<std::uint64_t, std::string> told_;  // of a growing log's jobs that may go on
};

}  // namespace vok::log

#endif
