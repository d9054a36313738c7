// The program that drives the companion: it holds the library, and knows the companion's names.
#ifndef VOK_TOOLS_COMPANION_CHECK_HOST_H
#define VOK_TOOLS_COMPANION_CHECK_HOST_H

#include <windows.h>

#include <string>

#include "companion/command_line.h"
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

    bool isDral() const { return identity_.role == sample::Role::Dral; }
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
    // The companion's own.
    std::string title(const std::string& printer) const { return title(identity_.role, printer); }
    std::string windowClass(const std::string& printer) const {
        return windowClass(identity_.role, printer);
    }
    std::string pipeName(const std::string& printer) const;

  private:
    const Options& options_;
    sample::Identity identity_;
    sample::VokLibrary library_;
    std::string folder_;
    Route route_ = Route::Message;
    int printers_ = 0;
};

}  // namespace vok::check

#endif
