// The program that drives the companion: it holds the library, and knows the companion's names.
#ifndef VOK_TOOLS_COMPANION_CHECK_HOST_H
#define VOK_TOOLS_COMPANION_CHECK_HOST_H

#include <windows.h>

#include <string>

#include "command_line.h"
#include "companion/command_line.h"
#include "job/vok_library.h"

namespace vok::check {

enum class Route { Message, Pipe };

// The title of the window that such a companion is found by before a job.
std::string titleOf(sample::Role role, const std::string& prefix, const std::string& printer);

class Host {
  public:
    Host(const Options& options, sample::Identity identity);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Loads a copy of the library under the companion's model prefix. Returns what went wrong, or
    // an empty text.
    std::string prepare();

    void takeRoute(Route route);
    Route route() const { return route_; }

    bool isDral() const { return identity_.role == sample::Role::Dral; }
    const std::string& prefix() const { return identity_.prefix; }
    const sample::VokCalls& calls() const { return library_.calls(); }
    DWORD limit() const { return options_.limit; }

    // A name that no printer has had before.
    std::string newPrinter();

    std::string title(const std::string& printer) const;
    // NEMB's class; for DRAL that of the hidden window.
    std::string windowClass(const std::string& printer) const;
    std::string hiddenTitle(const std::string& printer) const;
    std::string mutexName(const std::string& printer) const;
    std::string pipeName(const std::string& printer) const;
    // What follows the file name on the command line.
    std::string arguments(const std::string& printer) const;

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
