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

  private:
    void readFile(LogInput& input, std::size_t file);
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
