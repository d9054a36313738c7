// One job, driven event by event. Every step returns what was wrong, or an empty text.
#ifndef VOK_TOOLS_COMPANION_CHECK_JOB_H
#define VOK_TOOLS_COMPANION_CHECK_JOB_H

#include <string>

#include "host.h"
#include "job/job_record.h"
#include "partner.h"

namespace vok::check {

class Job {
  public:
    Job(Host& host, std::string printer);

    // Calls VOKLaunchXFiles once; true when both companions are reached.
    bool launchOnce();
    // Launches until the companion can be reached: by its window, or by a pipe that it has opened.
    std::string launch();
    // Sends an event, again while the answer is WAITPRINT.
    std::string send(DWORD event);
    // Opens the job, sends three pages and closes it.
    std::string run();
    // The launch and then the whole job.
    std::string launchAndRun();

    // Lets the pipe go without a word, as a host does that has died.
    void drop() { record_.dropCompanions(); }

    // The server's end of the companion's pipe.
    HANDLE pipe() { return host_.isDral() ? record_->hDRAL : record_->hNEMB; }
    VKDATA* record() { return record_.get(); }

    // "1, 1, 1, 1, 1": the replies so far.
    const std::string& replies() const { return replies_; }

  private:
    bool companionHasOpened();
    LONG call(DWORD event);
    std::string sendOnce(DWORD event, LONG& reply);
    void setFlagFor(DWORD event);

    Host& host_;
    std::string printer_;
    PartnerWindow partner_;
    sample::JobRecord record_;
    std::string replies_;
};

}  // namespace vok::check

#endif
