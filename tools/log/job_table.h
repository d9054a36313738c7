// The jobs that are not over yet: never more than a fixed number, whatever the log holds.
#ifndef VOK_LOG_JOB_TABLE_H
#define VOK_LOG_JOB_TABLE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "job.h"

namespace vok::log {

class JobTable {
  public:
    static constexpr std::size_t capacity = 256;

    // `given` gets every job once, when it is over for the table.
    explicit JobTable(std::function<void(Job&)> given) : given_(std::move(given)) {}

    // The job stays where it is until it is given out.
    // `record` is the number of the record that begins it, counted over all files.
    Job* create(std::uint64_t record);

    // Null when it has been given out.
    Job* find(std::uint64_t number) const;

    // The pipe belongs to `owner` now: any other job of the process has let it go.
    void takeHandle(const Job& owner, Side side);

    template <typename Function>
    void forEach(Function function) const {
        for (const auto& job : jobs_) {
            function(*job);
        }
    }

    void giveOut(const Job* job);
    // Jobs that have heard their end and spoke last before that record.
    void giveOutFinished(std::uint64_t before);
    void giveOutAll();

    std::uint64_t cutShort() const { return cutShort_; }
    // Jobs that were ever open.
    std::uint64_t count() const { return count_; }

  private:
    using Jobs = std::vector<std::unique_ptr<Job>>;

    void giveOut(Jobs::iterator position);
    std::uint32_t freeLane() const;

    Jobs jobs_;
    std::function<void(Job&)> given_;
    std::uint64_t count_ = 0;
    std::uint64_t cutShort_ = 0;
};

}  // namespace vok::log

#endif
