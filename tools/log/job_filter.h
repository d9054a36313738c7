// Lets through to an account the jobs that were asked for.
#ifndef VOK_LOG_JOB_FILTER_H
#define VOK_LOG_JOB_FILTER_H

#include <cstddef>
#include <string>
#include <vector>

#include "assembler.h"

namespace vok::log {

struct Wanted {
    std::string printer;            // a part of its name, in upper or lower case
    Time since = noTime;            // jobs that were not over by then
    Time until = noTime;            // jobs that had begun by then
    std::vector<std::string> only;  // any of these results, weights, companions or messages
    std::size_t slowest = 0;        // so many, the slowest first; 0: all
};

bool isWanted(const Job& job, const Wanted& wanted);

// What --only understands, besides the names of messages.
bool isKind(const std::string& word);

class JobFilter final : public Sink {
  public:
    JobFilter(Sink& account, Wanted wanted) : account_(account), wanted_(std::move(wanted)) {}
    void job(const Job& job) override;
    void finish(const Summary& summary) override;

  private:
    Sink& account_;
    Wanted wanted_;
    std::vector<Job> slowest_;
};

}  // namespace vok::log

#endif
