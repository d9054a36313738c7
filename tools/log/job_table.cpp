#include "job_table.h"

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <memory>
#include <utility>

namespace vok::log {

Job* JobTable::create(std::uint64_t record) {
    if (jobs_.size() == capacity) {
        const auto oldest =
            std::min_element(jobs_.begin(), jobs_.end(), [](const auto& left, const auto& right) {
                return left->lastRecord < right->lastRecord;
            });
        cutShort_ += (*oldest)->finished() ? 0 : 1;
        giveOut(oldest);
    }
    auto job = std::make_unique<Job>();
    job->number = ++count_;
    job->lastRecord = record;
    job->lane = freeLane();
    jobs_.push_back(std::move(job));
    return jobs_.back().get();
}

std::uint32_t JobTable::freeLane() const {
    std::bitset<capacity + 1> taken;
    for (const auto& job : jobs_) {
        taken.set(job->lane);
    }
    std::uint32_t lane = 0;
    while (taken[lane]) {
        ++lane;
    }
    return lane;
}

void JobTable::takeHandle(const Job& owner, Side side) {
    for (const auto& job : jobs_) {
        Companion& companion = job->at(side);
        if (job.get() != &owner && job->processId == owner.processId &&
            companion.route == Route::Pipe && companion.handle == owner.at(side).handle) {
            companion.handle.clear();
        }
    }
}

Job* JobTable::find(std::uint64_t number) const {
    const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                    [&](const auto& job) { return job->number == number; });
    return found == jobs_.end() ? nullptr : found->get();
}

void JobTable::giveOut(const Job* wanted) {
    const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                    [&](const auto& job) { return job.get() == wanted; });
    if (found != jobs_.end()) {
        giveOut(found);
    }
}

void JobTable::giveOut(Jobs::iterator position) {
    const std::unique_ptr<Job> job = std::move(*position);
    jobs_.erase(position);
    given_(*job);
}

void JobTable::giveOutFinished(std::uint64_t before) {
    for (std::size_t i = 0; i < jobs_.size();) {
        if (jobs_[i]->finished() && jobs_[i]->lastRecord < before) {
            giveOut(jobs_.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
}

void JobTable::giveOutAll() {
    while (!jobs_.empty()) {
        giveOut(jobs_.begin());
    }
}

}  // namespace vok::log
