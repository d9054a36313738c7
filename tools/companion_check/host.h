// The program that drives the companion: it holds the library, knows the companion's names, and has
// one job after another.
#pragma once

#include <windows.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "companion/command_line.h"
#include "job/job_record.h"
#include "job/vok_library.h"

namespace vok::check {

// What was asked for on the command line.
struct Options {
    std::string companion;
    std::string library;  // empty: the DLL beside this program
    std::string junit;    // file for the JUnit XML; empty: none
    unsigned long limit = 10000;
    bool stop = false;  // at the first check that fails
    bool json = false;
};

enum class Route { Message, Pipe };

class Host {
  public:
    Host(const Options& options, sample::Identity identity);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Loads a copy of the library under the companion's model prefix. Throws std::runtime_error
    // when it can't be used.
    void prepare();

    void takeRoute(Route route);
    Route route() const { return route_; }

    sample::Role role() const { return identity_.role; }
    bool isDral() const { return role() == sample::Role::Dral; }
    // The other companion, which the library wants to find too.
    sample::Role partner() const { return isDral() ? sample::Role::Nemb : sample::Role::Dral; }
    const std::string& prefix() const { return identity_.prefix; }
    const sample::VokCalls& calls() const { return library_.calls(); }
    DWORD limit() const { return options_.limit; }

    // A name that no printer has had before.
    std::string newPrinter();

    // Title and class of the window that such a companion is found by before a job. DRAL's class
    // may be any but on 9x; this one is that of its hidden window.
    std::string title(sample::Role role, const std::string& printer) const;
    std::string windowClass(sample::Role role, const std::string& printer) const;
    std::string pipeName(const std::string& printer) const;

  private:
    const Options& options_;
    sample::Identity identity_;
    sample::VokLibrary library_;
    std::string folder_;
    Route route_ = Route::Message;
    int printers_ = 0;
};

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

// One job, driven event by event. Every step throws Fault when it goes wrong.
class Job {
  public:
    // Makes a window that bears the names of the other companion, which the library wants to find
    // before it goes on.
    Job(Host& host, std::string printer);
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    Host& host() { return host_; }
    const std::string& printer() const { return printer_; }
    // Title and class of the companion's window, by which it is found.
    std::string title() const { return host_.title(host_.role(), printer_); }
    std::string windowClass() const { return host_.windowClass(host_.role(), printer_); }

    // Calls VOKLaunchXFiles once; true when the library answers 1.
    bool launchOnce();
    // Launches until the companion can be reached: by its window, or by a pipe that it has opened.
    void launch();
    // Sends an event, again while the answer is WAITPRINT.
    void send(DWORD event);
    // Opens the job, sends three pages and closes it.
    void run();
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
