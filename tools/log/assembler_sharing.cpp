// The Assembler's part for logs without process and thread numbers, in which jobs run side by side.
//
// A line goes to the only job that it fits. Where it fits several it goes to the one that spoke
// last, and the others remember it: only if one of them speaks again was it a guess. One that never
// does had ended or hung before.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "assembler.h"

namespace vok::log {

namespace {

bool mayHear(const Job& job, Side side, Event event) {
    if (side == Side::None) {
        return !job.isThrough();
    }
    const bool known = job.launch.result != LaunchResult::Missing;
    if (job.hasEnded(side) || (event == Event::Open && job.hasOpened(side))) {
        return false;
    }
    return !known || job.hasOpened(side) || (event != Event::Page && event != Event::Close);
}

bool handleFits(const Job& job, const Message& message) {
    const Companion& companion = job.at(message.text.side);
    const bool unknown = companion.handle.empty() && companion.route != Route::Pipe;
    return message.value.empty() || companion.handle == message.value || unknown;
}

bool beginsCall(const Message& message) {
    const Step step = message.text.step;
    const bool pageByWindow = step == Step::Reply && message.text.event == Event::Page;
    return isAsk(step) || step == Step::NoHandle || step == Step::NoRecord ||
           step == Step::AnyMessage || step == Step::UnknownEvent || pageByWindow;
}

// Whether the line is told by the handle in it to be this job's.
bool namesHandle(const Job& job, const Message& message) {
    const Step step = message.text.step;
    return isAsk(step) && message.text.side != Side::None && !message.value.empty() &&
           job.at(message.text.side).handle == message.value;
}

// Whether the job could have written this line next: its handle, what it waits for and what it has
// heard already speak for it or against it.
bool fits(const Job& job, const Message& message) {
    if (job.launch.result == LaunchResult::Open) {
        return false;
    }
    if (isTrail(message.text.step)) {
        const bool meets =
            job.open && (message.text.side == Side::None || message.text.side == job.open->side);
        return meets && !job.pending();
    }
    if (job.open && !beginsNewExchange(*job.open, message)) {
        const bool asksAgain = message.text.step == Step::Loop && job.open->reply == WaitPrint;
        return job.pending() || asksAgain ||
               (message.text.step != Step::Loop && !beginsCall(message));
    }
    if (job.pending() || !beginsCall(message)) {
        return false;
    }
    const Side side = message.text.side;
    const bool pageReply = message.text.step == Step::Reply;
    const bool nine = message.text.route == Route::Window9x;
    const Route route = job.at(side == Side::None ? Side::Dral : side).route;
    const bool routeFits = !pageReply || (nine ? route == Route::Window9x : route == Route::Window);
    return routeFits &&
           (!isAsk(message.text.step) || side == Side::None || handleFits(job, message)) &&
           mayHear(job, side, message.text.event);
}

}  // namespace

// The jobs among which a stream without thread numbers is to choose.
std::vector<Job*> Assembler::jobsOf(const Stream& stream) {
    std::vector<Job*> jobs;
    for (Job& job : jobs_) {
        if (!job.threadId && job.processId == stream.processId) {
            jobs.push_back(&job);
        }
    }
    return jobs;
}

bool Assembler::isLive(const Job& job) const {
    // What a mixed job heard may have been for another.
    return (!job.isThrough() || job.mixed > 0) && job.lastRecord + afterlife >= records_;
}

std::vector<Job*> Assembler::liveJobs(const Stream& stream) {
    std::vector<Job*> jobs = jobsOf(stream);
    std::erase_if(jobs, [&](const Job* job) { return !isLive(*job); });
    return jobs;
}

// Null where the line fits no job.
Job* Assembler::chooseJob(const Stream& stream, const Message& message) {
    // What follows an answer tells nothing of who is there.
    const bool trail = isTrail(message.text.step);
    std::vector<Job*> candidates = jobsOf(stream);
    std::erase_if(candidates, [&](const Job* job) {
        return !(isLive(*job) || namesHandle(*job, message) || trail) || !fits(*job, message);
    });
    const auto others = std::ranges::partition(
        candidates, [&](const Job* job) { return namesHandle(*job, message); });
    if (others.size() < candidates.size()) {
        candidates.erase(others.begin(), others.end());
    }
    if (candidates.empty()) {
        return !trail                                         ? misfit(stream, message)
               : message.text.step == Step::AnyMessageInvalid ? stream.job
                                                              : nullptr;
    }
    Job* const chosen = *std::ranges::max_element(candidates, {}, &Job::lastRecord);
    if (trail) {
        return chosen;
    }
    const bool asked = chosen->pending();
    for (Job* other : candidates) {
        if (other != chosen) {
            other->doubts.push_back({chosen->number, asked ? answerIn(message) : std::string()});
        }
    }
    if (candidates.size() == 1 && namesHandle(*chosen, message)) {
        // It has been answered, and so what it was given was its own.
        settle(*chosen);
    }
    speak(*chosen, message);
    return chosen;
}

// No job could have written this line by what is known of them: one of them was wronged before.
Job* Assembler::misfit(const Stream& stream, const Message& message) {
    Job* owner = nullptr;
    for (Job* job : jobsOf(stream)) {
        owner = namesHandle(*job, message) && !job->isThrough() ? job : owner;
    }
    if (owner != nullptr && owner->mixed == 0 && owner->pending() && takeBack(*owner)) {
        speak(*owner, message);
        return owner;
    }
    const std::vector<Job*> live = liveJobs(stream);
    if (live.size() > 1 || (live.size() == 1 && live.front()->shared)) {
        mix(live);
    }
    return owner != nullptr ? owner : live.empty() ? stream.job : live.back();
}

// The job goes on, so the answer that another was given was its own.
bool Assembler::takeBack(Job& job) {
    while (!job.doubts.empty()) {
        const Doubt doubt = job.doubts.back();
        job.doubts.pop_back();
        Job* const other = findJob(doubt.job);
        if (other == nullptr || !other->open || other->open->delivery != Delivery::Answered ||
            replyText(other->open->reply) != doubt.reply) {
            continue;
        }
        job.open->reply = std::exchange(other->open->reply, std::nullopt);
        job.open->delivery = std::exchange(other->open->delivery, Delivery::Open);
        job.open->asks += std::exchange(other->open->asks, 0);
        job.open->waits += std::exchange(other->open->waits, 0);
        return true;
    }
    return false;
}

// Null when it has been given out.
Job* Assembler::findJob(std::uint64_t number) {
    const auto found = std::ranges::find(jobs_, number, &Job::number);
    return found == jobs_.end() ? nullptr : &*found;
}

void Assembler::settle(const Job& job) {
    for (Job& other : jobs_) {
        std::erase_if(other.doubts, [&](const Doubt& doubt) {
            return doubt.job == job.number && !doubt.reply.empty();
        });
    }
}

// What a job says shows that it was there all the while.
void Assembler::speak(Job& job, const Message& message) {
    for (const Doubt& doubt : std::exchange(job.doubts, {})) {
        Job* const other = findJob(doubt.job);
        const bool alike = message.text.step == Step::Reply && !doubt.reply.empty() &&
                           doubt.reply == answerIn(message);
        if (!alike) {
            mix(other == nullptr ? std::vector{&job} : std::vector{&job, other});
        }
    }
}

// How many jobs were mixed that spoke when this one had fallen silent: what is missing of it may
// have been given to them.
std::uint64_t Assembler::mixedAfter(const Job& job) const {
    std::uint64_t jobs = mixedRecord_ > job.lastRecord ? 1 : 0;
    for (const Job& other : jobs_) {
        if (other.mixed > 0 && other.lastRecord > job.lastRecord) {
            jobs = std::max(jobs, other.mixed);
        }
    }
    return jobs;
}

void Assembler::mix(const std::vector<Job*>& jobs) {
    const std::uint64_t group = jobs.front()->number;
    std::set<std::uint64_t> groups;
    for (const Job* job : jobs) {
        groups.insert(job->group);
    }
    std::vector<Job*> members;
    for (Job& job : jobs_) {
        if (groups.contains(job.group)) {
            members.push_back(&job);
        }
    }
    for (Job* job : members) {
        job->group = group;
        // The other one may have been given out.
        job->mixed = std::max<std::size_t>(members.size(), 2);
    }
}

}  // namespace vok::log
