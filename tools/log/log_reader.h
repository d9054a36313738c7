// Reads log files from end to end and tells a sink what is in them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "assembler.h"
#include "log_input.h"

namespace vok::log {

struct Progress {
    std::size_t file = 0;
    std::uint64_t position = 0;
    std::uint64_t size = 0;  // 0 when unknown
    std::uint64_t lines = 0;
};

class LogReader {
  public:
    LogReader(const ReaderOptions& options, Sink& sink,
              std::function<void(const Progress&)> progress);

    // Throws std::runtime_error for a file that can't be opened.
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
    Sink& sink_;
    std::function<void(const Progress&)> progress_;
    Summary summary_;
    Assembler assembler_;
    std::size_t file_ = 0;
    std::uint64_t logLines_ = 0;  // of the file, that only a log has
    std::uint64_t line_ = 0;
    Time before_ = noTime;
};

// Reads one log as it grows. Returns after an interrupt (Ctrl-C), or when the system asks the
// program to end. The file may come later, be renamed, emptied or begun anew; what is not as one
// might expect is said on the standard error output. Throws std::runtime_error for what can't be
// followed.
Summary follow(LogReader& reader, const std::string& path);

}  // namespace vok::log
