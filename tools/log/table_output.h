// The account for people: one line for each job, and what it all means.
#ifndef VOK_LOG_TABLE_OUTPUT_H
#define VOK_LOG_TABLE_OUTPUT_H

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
    void writeRow(const std::string& file, std::span<const std::string> cells);
    void writeCounts(const Summary& summary);
    void writeEvents(const Summary& summary);
    void writeFindings(const Summary& summary);
    void writeFinding(const FindingText& text, const FindingCounts& counts, const Summary& summary);

    Writer& writer_;
    const Options& options_;
    bool headed_ = false;
};

}  // namespace vok::log

#endif
