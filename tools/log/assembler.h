// Puts a log's records together to calls, and calls to jobs.
//
// Records of one thread (where the log tells threads apart) follow each other; a job is what stands
// from one launch to the next. Without thread ids several jobs may be mixed: the handles in the
// lines tell them apart, and an answer goes to the job that waits for it.
//
// Memory does not grow with the log: at most `maxJobs` jobs and `maxStreams` threads are kept, each
// of bounded size, and a job is handed to the sink as soon as it is over.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "steps.h"
#include "summary.h"

namespace vok::log {

// Who wants to know of the jobs.
class Sink {
  public:
    virtual ~Sink() = default;
    // The job is over, or the log is; in a growing log also one that has ended or hangs by now.
    virtual void job(const Job&) {}
    // All is read.
    virtual void finish(const Summary&) {}
};

struct ReaderOptions {
    std::int64_t slow = 10000;    // milliseconds from which on an answer is slow
    std::int64_t silent = 10000;  // and a job without an end hangs
    bool keepLines = false;       // jobs bring their log lines along
    bool growing = false;         // jobs are told before they are over for good
    // The files are the parts of one log, in this order: jobs may begin in one and end in another.
    bool joined = false;
};

class Assembler {
  public:
    Assembler(const ReaderOptions& options, Summary& summary, Sink& sink);

    void beginFile(std::size_t file) {
        file_ = file;
        jump_ = {};
    }
    // A record of the library.
    void add(const Record& record);
    // The last line had that time, and nothing has come for so many milliseconds since: tells the
    // sink of the jobs that have ended or hang, once for each time that they speak.
    void tellStanding(Time last, std::int64_t idle);
    // No more lines belong to the jobs so far.
    void endLog(Time last, std::int64_t idle = 0);

  private:
    // A job that has ended may still be spoken of for so many records.
    static constexpr std::uint64_t afterlife = 2000;

    using Id = std::optional<std::uint32_t>;

    // A call of which only the entry is known yet.
    struct Entry {
        std::string name;  // of the export; empty when there is none
        Time time = noTime;
        Time inner = noTime;  // the last trace before the work
        std::uint64_t line = 0;
        std::uint64_t record = 0;
        std::vector<JobLine> lines;
    };

    struct Stream {
        Id processId;
        Id threadId;
        Job* job = nullptr;
        Job* launching = nullptr;
        LaunchProgress launch;
        Entry entry;
        std::uint64_t lastRecord = 0;
    };

    Stream& streamOf(const Record& record);
    void takeTrace(Stream& stream, const Message& message, const Record& record);
    void endEntry(Stream& stream, bool logEnds);
    void beginLaunch(Stream& stream, const Message& message, const Record& record);
    void leaveJob(Stream& stream, Time now);
    void takeLaunch(Stream& stream, const Message& message, const Record& record);
    void takeEvent(Stream& stream, const Message& message, const Record& record);
    Job& jobOf(Stream& stream, const Message& message, const Record& record);
    void beginExchange(Stream& stream, Job& job, const Message& message, const Record& record);
    void endExchange(Job& job, Summary& summary) const;
    void conclude(Job& job, Summary& summary) const;
    void takeLibrary(Stream& stream, const Message& message, const Record& record);
    std::vector<Job*> jobsOf(const Stream& stream);
    std::vector<Job*> liveJobs(const Stream& stream);
    bool isLive(const Job& job) const;
    Job* chooseJob(const Stream& stream, const Message& message);
    Job* misfit(const Stream& stream, const Message& message);
    bool takeBack(Job& job);
    void settle(const Job& job);
    void speak(Job& job, const Message& message);
    void mix(const std::vector<Job*>& jobs);
    std::uint64_t mixedAfter(const Job& job) const;
    Job& newJob(Stream& stream, std::uint64_t line, Time time);
    Job* findJob(std::uint64_t number);
    template <typename Predicate>
    void giveOutIf(Predicate wanted);
    void touch(Job& job, const Record& record) const;
    void useEntry(Stream& stream, Job& job) const;
    void account(Job& job, const Exchange& exchange, Summary& summary) const;
    void learnOfJump(const Job& job);
    Duration silence(const Job& job, Time last, std::int64_t idle) const;
    void leaveOpen(Job& job, Time last, std::int64_t idle, Summary& summary) const;
    void tell(Job job, Time last, std::int64_t idle) const;
    Exchange exchangeOf(const Entry& entry, Delivery delivery) const;
    void jobOver(Job& job);

    ReaderOptions options_;
    Summary& summary_;
    Sink& sink_;
    std::list<Job> jobs_;  // that are not over yet
    std::uint64_t jobCount_ = 0;
    std::map<std::pair<Id, Id>, Stream> streams_;
    std::size_t file_ = 0;
    std::uint64_t records_ = 0;
    ClockJump jump_;                 // the largest that is known of in this file
    std::uint64_t mixedRecord_ = 0;  // the last of any mixed job that is over
};

}  // namespace vok::log
