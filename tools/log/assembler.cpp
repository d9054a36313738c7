#include "assembler.h"

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text.h"

namespace vok::log {

namespace {

constexpr std::size_t maxJobs = 256;
constexpr std::size_t maxStreams = 512;
// A failed launch that is tried again within this time is the same job's.
constexpr std::int64_t retryWithin = 60000;
// Milliseconds in which the library may still write of a job whose companions have heard the end.
constexpr std::int64_t settlingTime = 2000;
constexpr std::size_t maxLineLength = 200;
constexpr std::size_t maxEntryLines = 16;

bool isExport(std::string_view name) {
    return name.starts_with("VOK");
}

bool isLaunchStep(Step step) {
    return step >= Step::LaunchTrue && step <= Step::NoModuleName;
}

bool isRetry(const Job& job, std::string_view printer, Time now) {
    return job.launch.result == LaunchResult::NotReached && job.printer == printer &&
           job.exchanges.size() == 0 && !job.open &&
           between(job.end, now).value_or(0) <= retryWithin;
}

JobLine keep(const Record& record) {
    return {record.line, shortened(toUtf8(record.text), maxLineLength)};
}

std::uint32_t freeLane(const std::list<Job>& jobs) {
    std::bitset<maxJobs> taken;
    for (const Job& job : jobs) {
        taken.set(job.lane);
    }
    std::uint32_t lane = 0;
    while (taken[lane]) {
        ++lane;
    }
    return lane;
}

}  // namespace

Assembler::Assembler(const ReaderOptions& options, Summary& summary, Sink& sink)
    : options_(options), summary_(summary), sink_(sink) {}

void Assembler::add(const Record& record) {
    ++records_;
    const Message message = recognise(record.message);
    Stream& stream = streamOf(record);
    const Step step = message.text.step;
    if (step == Step::TraceEnter || step == Step::TraceExit) {
        takeTrace(stream, message, record);
    } else if (step == Step::LaunchBegin) {
        beginLaunch(stream, message, record);
    } else if (isLaunchStep(step)) {
        takeLaunch(stream, message, record);
    } else if (isEventStep(step)) {
        takeEvent(stream, message, record);
    } else {
        takeLibrary(stream, message, record);
    }
}

Assembler::Stream& Assembler::streamOf(const Record& record) {
    const std::pair key(record.processId, record.threadId);
    auto found = streams_.find(key);
    if (found == streams_.end()) {
        if (streams_.size() == maxStreams) {
            streams_.erase(std::ranges::min_element(
                streams_, {}, [](const auto& one) { return one.second.lastRecord; }));
        }
        found = streams_.try_emplace(key).first;
        found->second.processId = record.processId;
        found->second.threadId = record.threadId;
    }
    found->second.lastRecord = records_;
    return found->second;
}

void Assembler::takeTrace(Stream& stream, const Message& message, const Record& record) {
    const bool enters = message.text.step == Step::TraceEnter;
    if (enters && isExport(message.value)) {
        endEntry(stream, false);
        if (stream.threadId) {
            stream.launching = nullptr;
        }
        stream.entry = {
            std::string(message.value), record.time, record.time, record.line, records_, {}};
    }
    if (!stream.entry.name.empty()) {
        stream.entry.inner = record.time;
        if (options_.keepLines && stream.entry.lines.size() < maxEntryLines) {
            stream.entry.lines.push_back(keep(record));
        }
        return;
    }
    if (stream.launching == nullptr) {
        return;
    }
    if (enters && message.value.starts_with("StartNEMB")) {
        stream.launch.side = Side::Nemb;
    }
    touch(*stream.launching, record);
}

// The stream turns to another job. Without thread ids the one so far may go on beside it.
void Assembler::leaveJob(Stream& stream, Time now) {
    Job* job = std::exchange(stream.job, nullptr);
    if (job == nullptr) {
        return;
    }
    if (job->open && job->open->delivery != Delivery::Open) {
        endExchange(*job, summary_);
    }
    if (stream.threadId || (job->isOver() && !job->shared)) {
        job->left = between(job->end, now);
        giveOutIf([job](const Job& one) { return &one == job; });
    }
}

void Assembler::beginLaunch(Stream& stream, const Message& message, const Record& record) {
    constexpr std::string_view portLabel = ", PortName = ";
    const std::size_t comma = message.value.rfind(portLabel);
    const std::string printer = toUtf8(message.value.substr(0, comma));
    if (stream.job == nullptr || !isRetry(*stream.job, printer, record.time)) {
        leaveJob(stream, record.time);
        giveOutIf([this](const Job& job) {
            return job.finished() && job.lastRecord + afterlife < records_;
        });
        newJob(stream, record.line, record.time);
    }
    Job& job = *stream.job;
    if (const std::vector<Job*> live = liveJobs(stream); live.size() > 1) {
        std::ranges::for_each(live, [](Job* other) { other->shared = true; });
    }
    Job* const other = stream.threadId ? nullptr : stream.launching;
    if (other != nullptr && other != &job) {  // which this launch has interrupted
        other->doubts.push_back({job.number, {}});
        if (between(other->end, record.time).value_or(0) <= options_.silent) {
            mix({other, &job});
        }
    }
    job.printer = printer;
    if (comma != std::string_view::npos) {
        job.port = toUtf8(message.value.substr(comma + portLabel.size()));
    }
    stream.launching = &job;
    stream.launch = {};
    if (job.launch.attempts++ == 0) {
        job.launch.start = stream.entry.name.empty() ? record.time : stream.entry.time;
        job.launch.firstLine = stream.entry.name.empty() ? record.line : stream.entry.line;
    }
    job.launch.result = LaunchResult::Open;
    useEntry(stream, job);
    job.time.enter(Phase::Launch);
    job.hasDetails = true;
    ++summary_.launches;
    touch(job, record);
    job.time.beginTick();
}

void Assembler::takeLaunch(Stream& stream, const Message& message, const Record& record) {
    if (stream.launching == nullptr && !stream.threadId) {
        // A launch that another one interrupted goes on.
        for (Job* job : liveJobs(stream)) {
            stream.launching = job->launch.result == LaunchResult::Open ? job : stream.launching;
        }
        if (stream.launching != nullptr) {
            speak(*stream.launching, message);
        }
    }
    if (stream.launching == nullptr) {
        return;  // its beginning is not in the log
    }
    Job& job = *stream.launching;
    touch(job, record);
    takeLaunchStep(message, record.line, stream.launch, job);
    if (message.text.step == Step::PipeReady) {
        // The pipe is this job's now: any other job of the process has let it go.
        for (Job& other : jobs_) {
            Companion& companion = other.at(message.text.side);
            if (&other != &job && other.processId == job.processId &&
                companion.route == Route::Pipe &&
                companion.handle == job.at(message.text.side).handle) {
                companion.handle.clear();
            }
        }
    }
    if (message.text.step == Step::LaunchTrue || message.text.step == Step::LaunchFalse) {
        summary_.launchesReached += message.text.step == Step::LaunchTrue ? 1 : 0;
        job.launch.end = record.time;
        job.launch.lastLine = record.line;
        job.time.enter(Phase::Host);
        stream.launching = nullptr;
    }
}

void Assembler::takeLibrary(Stream& stream, const Message& message, const Record& record) {
    constexpr std::pair<Step, FindingId> meanings[] = {
        {Step::Unknown, FindingId::UnknownTexts},
        {Step::LibraryNotLoaded, FindingId::LibraryNotLoaded},
        {Step::LibraryNotUnloaded, FindingId::LibraryNotUnloaded},
        {Step::NoDriverDirectory, FindingId::DriverDirectory},
        {Step::RegistryFailed, FindingId::Registry},
        {Step::LibraryException, FindingId::LibraryException}};
    for (const auto& [step, id] : meanings) {
        if (step == message.text.step) {
            summary_.note(id, file_, record.line);
        }
    }
    Job* job = stream.launching != nullptr ? stream.launching : stream.job;
    if (job != nullptr) {
        touch(*job, record);
    }
}

Job& Assembler::newJob(Stream& stream, std::uint64_t line, Time time) {
    if (jobs_.size() == maxJobs) {
        const Job& oldest = *std::ranges::min_element(jobs_, {}, &Job::lastRecord);
        summary_.at(FindingId::JobsCutShort).times += oldest.finished() ? 0 : 1;
        giveOutIf([number = oldest.number](const Job& job) { return job.number == number; });
    }
    const std::uint32_t lane = freeLane(jobs_);
    Job& job = jobs_.emplace_back();
    job.lane = lane;
    job.number = job.group = ++jobCount_;
    job.lastRecord = records_;
    job.file = file_;
    job.processId = stream.processId;
    job.threadId = stream.threadId;
    job.firstLine = job.lastLine = line;
    job.start = job.end = time;
    stream.job = &job;
    return job;
}

template <typename Predicate>
void Assembler::giveOutIf(Predicate wanted) {
    for (auto next = jobs_.begin(); next != jobs_.end();) {
        const auto job = next++;
        if (wanted(*job)) {
            jobOver(*job);
            jobs_.erase(job);
        }
    }
}

void Assembler::touch(Job& job, const Record& record) const {
    job.lastLine = record.line;
    job.lastRecord = records_;
    if (record.time != noTime) {
        job.start = job.start == noTime ? record.time : job.start;
        job.end = record.time;
        job.time.advance(record.time, record.line, file_);
    }
    if (options_.keepLines) {
        job.lines.add(keep(record));
    }
}

// A job's tick counts show by how much the clock was set, which others can't see.
void Assembler::learnOfJump(const Job& job) {
    if (job.time.jump() && std::abs(job.time.jump()->ms) > std::abs(jump_.ms)) {
        jump_ = *job.time.jump();
    }
}

// How long the job has said nothing.
Duration Assembler::silence(const Job& job, Time last, std::int64_t idle) const {
    const std::int64_t setBy = jump_.line > job.lastLine ? jump_.ms : 0;
    const Duration inLog = last == noTime ? std::nullopt : between(job.end, last - setBy);
    return inLog || idle > 0 ? Duration(inLog.value_or(0) + idle) : std::nullopt;
}

// The log ends before the job does: how long it had been silent then says whether it hangs.
void Assembler::leaveOpen(Job& job, Time last, std::int64_t idle, Summary& summary) const {
    if (!job.pending()) {
        endExchange(job, summary);
    }
    if (job.isOver()) {
        return;
    }
    job.atLogEnd = true;
    job.growing = options_.growing;
    job.silent = silence(job, last, idle);
    job.overdue =
        job.silent ? *job.silent > options_.silent : records_ - job.lastRecord > afterlife;
}

void Assembler::endLog(Time last, std::int64_t idle) {
    for (auto& [key, stream] : streams_) {
        endEntry(stream, true);
    }
    for (Job& job : jobs_) {
        if (!job.shared) {
            job.time.settle();
            learnOfJump(job);
        }
    }
    for (Job& job : jobs_) {
        leaveOpen(job, last, idle, summary_);
    }
    giveOutIf([](const Job&) { return true; });
    streams_.clear();
}

// All that can be told of the job is known.
void Assembler::conclude(Job& job, Summary& summary) const {
    if (const std::uint64_t others = mixedAfter(job);
        others > 0 && job.shared && job.mixed == 0 && !job.isOver()) {
        job.mixed = others + 1;
    }
    endExchange(job, summary);
    if (!job.shared) {
        job.time.settle();
    }
    if (job.slowest) {
        account(job, *job.slowest, summary);
    }
    judge(job);
    if (job.mixed > 0) {
        for (const Finding& finding : dropGuesses(job)) {
            summary.note(finding.id, finding.file, finding.line);
            ++summary.at(finding.id).mixed;
        }
    }
}

void Assembler::tellStanding(Time last, std::int64_t idle) {
    for (Job& job : jobs_) {
        const std::int64_t limit = job.isThrough() ? settlingTime : options_.silent;
        const bool news = job.hasDetails && job.told != job.lastRecord;
        if (news && silence(job, last, idle).value_or(0) > limit) {
            job.told = job.lastRecord;
            tell(job, last, idle);
        }
    }
}

// By a copy: the job itself may go on.
void Assembler::tell(Job job, Time last, std::int64_t idle) const {
    Summary nowhere;
    for (const auto& [key, stream] : streams_) {
        const bool ours = stream.threadId && stream.job != nullptr &&
                          stream.job->number == job.number && !stream.entry.name.empty();
        if (ours) {
            endExchange(job, nowhere);
            job.open = exchangeOf(stream.entry, Delivery::Open);
        }
    }
    job.standing = true;
    leaveOpen(job, last, idle, nowhere);
    conclude(job, nowhere);
    sink_.job(job);
}

void Assembler::jobOver(Job& job) {
    conclude(job, summary_);
    learnOfJump(job);
    mixedRecord_ = job.mixed > 0 ? std::max(mixedRecord_, job.lastRecord) : mixedRecord_;
    for (auto& [key, stream] : streams_) {
        stream.launching = stream.launching == &job ? nullptr : stream.launching;
        stream.job = stream.job == &job ? nullptr : stream.job;
    }
    summary_.add(job);
    sink_.job(job);
}

}  // namespace vok::log
