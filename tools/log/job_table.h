// The jobs that are not over yet: never more than a fixed number, whatever the log holds.
#ifndef VOK_LOG_JOB_TABLE_H
#define VOK_LOG_JOB_TABLE_H

#include <algorithm>
#include <bitset>
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
    Job& create(std::uint64_t record) {
        if (jobs_.size() == capacity) {
            const Job* oldest = std::ranges::min_element(jobs_, {}, lastRecordOf)->get();
            cutShort_ += oldest->finished() ? 0 : 1;
            giveOutIf([&](const Job& job) { return &job == oldest; });
        }
        auto job = std::make_unique<Job>();
        job->number = ++count_;
        job->lastRecord = record;
        job->lane = freeLane();
        jobs_.push_back(std::move(job));
        return *jobs_.back();
    }

    // Null when it has been given out.
    Job* find(std::uint64_t number) const {
        const auto found =
            std::ranges::find_if(jobs_, [&](const auto& job) { return job->number == number; });
        return found == jobs_.end() ? nullptr : found->get();
    }

    template <typename Function>
    void forEach(Function function) const {
        for (const auto& job : jobs_) {
            function(*job);
        }
    }

    template <typename Predicate>
    void giveOutIf(Predicate wanted) {
        for (std::size_t i = 0; i < jobs_.size();) {
            if (!wanted(std::as_const(*jobs_[i]))) {
                ++i;
                continue;
            }
            const std::unique_ptr<Job> job = std::move(jobs_[i]);
            jobs_.erase(jobs_.begin() + static_cast<std::ptrdiff_t>(i));
            given_(*job);
        }
    }

    std::uint64_t cutShort() const { return cutShort_; }

  private:
    static std::uint64_t lastRecordOf(const std::unique_ptr<Job>& job) { return job->lastRecord; }

    std::uint32_t freeLane() const {
        std::bitset<capacity + 1> taken;
        forEach([&](const Job& job) { taken.set(job.lane); });
        std::uint32_t lane = 0;
        while (taken[lane]) {
            ++lane;
        }
        return lane;
    }

    std::vector<std::unique_ptr<Job>> jobs_;
    std::function<void(Job&)> given_;
    std::uint64_t count_ = 0;
    std::uint64_t cutShort_ = 0;
};

}  // namespace vok::log

#endif
