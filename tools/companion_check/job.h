// One job, driven event by event, and what is waited for meanwhile. Every step throws Fault when it
// goes wrong.
#ifndef VOK_TOOLS_COMPANION_CHECK_JOB_H
#define VOK_TOOLS_COMPANION_CHECK_JOB_H

#include <functional>
#include <stdexcept>
#include <string>

#include "host.h"
#include "job/job_record.h"

namespace vok::check {

// What was wrong with the companion: ends a check wherever it is seen.
class Fault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws the fault unless all is right.
void require(bool right, const std::string& fault);

// Takes the steps, and puts before a fault in which of several cases it was.
void inCase(const std::string& which, const std::function<void()>& steps);

// Asks until the answer is yes, while this thread serves its windows. Throws the fault when it did
// not become yes within `limit` milliseconds, which is said behind it.
void await(DWORD limit, const std::string& fault, const std::function<bool()>& isTrue);

// Throws the fault when the window is there and answers no message in time.
void askWindow(DWORD limit, HWND window);

class Job {
  public:
    // Makes a window that bears the names of the other companion, which the library wants to find
    // before it goes on.
    Job(Host& host, std::string printer);
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    // Calls VOKLaunchXFiles once; true when both companions are reached.
    bool launchOnce();
    // Launches until the companion can be reached: by its window, or by a pipe that it has opened.
    void launch();
    // Sends an event, again while the answer is WAITPRINT.
    void send(DWORD event);
    // Opens the job, sends three pages and closes it.
    void run();
    // The launch and then the whole job.
    void launchAndRun();

    // Lets the pipe go without a word, as a host does that has died.
    void drop() { record_.dropCompanions(); }

    // The server's end of the companion's pipe.
    HANDLE pipe() { return host_.isDral() ? record_->hDRAL : record_->hNEMB; }
    VKDATA* record() { return record_.get(); }

    // "1, 1, 1, 1, 1": the replies so far.
    const std::string& replies() const { return replies_; }

  private:
    LONG call(DWORD event);
    LONG sendOnce(DWORD event);

    Host& host_;
    std::string printer_;
    std::string partnerClass_;
    HWND partner_;
    sample::JobRecord record_;
    std::string replies_;
};

}  // namespace vok::check

#endif
