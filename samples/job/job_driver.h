/**
 * @file job_driver.h
 * What a print processor does with one job: launches the companions, tells them of every event,
 * obeys their answers and copies the document to the port. It knows no spooler; what it needs of
 * one is JobHost.
 */
#pragma once

#include <vok/vok.h>

#include <string>
#include <string_view>

#include "common/agreement.h"
#include "job_record.h"
#include "page_splitter.h"
#include "vok_library.h"

namespace vok::sample {

/// The surroundings of a job.
class JobHost {
  public:
    virtual ~JobHost() = default;

    /// Reads the next bytes of the document into `buffer`; stores 0 in `count` at its end.
    virtual bool read(char* buffer, DWORD size, DWORD& count) = 0;
    /// Begins the output. Called once, after the companions have accepted the job and before the
    /// first byte: a refused job leaves no trace at the port.
    virtual bool openPort() = 0;
    virtual bool write(std::string_view bytes) = 0;
    /// True once the job was deleted or its processing was aborted.
    virtual bool cancelled() = 0;
    virtual void pause(DWORD milliseconds) = 0;
    virtual DWORD ticks() = 0;
    /// Takes a line of the account.
    virtual void say(const std::string& text) = 0;
};

/// How often and how long the job waits for its companions.
struct JobLimits {
    DWORD launchTries = 120;
    DWORD launchPause = 250;
    DWORD waitTries = 60;
    DWORD waitPause = 500;
};

struct JobTicket {
    std::string printer;
    std::string port;
    std::string document;
    DWORD id = 0;
};

enum class JobEnd {
    Printed,
    Refused,    ///< A companion answered NOPRINT.
    Cancelled,  ///< The job was deleted while it was processed.
    Failed      ///< The document could not be read or the port not be written, or memory ran out.
};

const char* toText(JobEnd end);

class JobDriver {
  public:
    /// All arguments must outlive the driver, which is good for one job.
    JobDriver(const VokCalls& calls, JobHost& host, const JobTicket& ticket,
              const JobLimits& limits);

    /// Memory that runs out, in the library as well, whose exception is then the standard
    /// library's, ends no more than the part of the job that needed it; both companions hear of the
    /// job's end. Where the account can't even be told of it, that exception leaves.
    JobEnd run();

  private:
    enum class Companion { Dral, Nemb };
    enum class Answer { GoOn, Refused, Cancelled };

    template <typename Part>
    void hasMemory(Part part);
    void launch();
    JobEnd openAndCopy();
    JobEnd copyDocument();
    JobEnd copyPiece(const PagePiece& piece);
    JobEnd endPage();
    void endJob(DWORD event);
    Answer tellBoth(DWORD event);
    Answer tell(Companion companion, DWORD event, std::string& account);
    LONG sendOnce(Companion companion, DWORD event);
    [[nodiscard]] std::string describe(DWORD event) const;

    const VokCalls& calls_;
    JobHost& host_;
    const JobTicket& ticket_;
    const JobLimits& limits_;
    JobRecord record_;
    DWORD page_ = 0;
};

}  // namespace vok::sample
