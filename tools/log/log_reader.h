// Reads log files from end to end and tells the sinks what is in them.
#ifndef VOK_LOG_LOG_READER_H
#define VOK_LOG_LOG_READER_H

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "assembler.h"
#include "log_input.h"

namespace vok::log {

struct ReaderOptions {
    AssemblerOptions assembler;
    // The files are the parts of one log, in this order: jobs may begin in one and end in another.
    bool joined = false;
};

struct Progress {
    std::size_t file = 0;
    std::uint64_t position = 0;
    std::uint64_t size = 0;  // 0 when unknown
    std::uint64_t lines = 0;
};

class LogReader {
  public:
    LogReader(const ReaderOptions& options, std::span<Sink* const> sinks,
              std::function<void(const Progress&)> progress);

    // Throws InputError for a file that can't be opened.
    Summary read(const std::vector<std::string>& files);

    // The same in steps, for a log that grows: what is there is read again and again, and jobs are
    // told after so many milliseconds without anything new.
    void begin(const std::vector<std::string>& files) { summary_.files = files; }
    void beginFile(std::size_t file);
    // False when nothing was there.
    bool readLines(LogInput& input);
    void tellStanding(std::int64_t idle) { assembler_.tellStanding(before_, idle); }
    // Why the file is no log, as far as it is read; empty when it is one.
    std::string whyNoLog() const;
    Summary end(std::int64_t idle);

  private:
    void takeLine(std::string_view text, bool whole);
    void takeRecord(const Record& record);

    ReaderOptions options_;
    std::vector<Sink*> sinks_;
    std::function<void(const Progress&)> progress_;
    Summary summary_;
    Assembler assembler_;
    std::size_t file_ = 0;
    std::uint64_t logLines_ = 0;  // of the file, that only a log has
    std::uint64_t line_ = 0;
    Time before_ = noTime;
};

}  // namespace vok::log

#endif
