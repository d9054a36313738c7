// The simulated machine. See sim.h for how to use it.
#pragma once
#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "clock.h"
#include "desktop.h"
#include "faults.h"
#include "file_system.h"
#include "handles.h"
#include "modules.h"
#include "mutexes.h"
#include "os_release.h"
#include "pipes.h"
#include "processes.h"
#include "recorder.h"
#include "registry.h"
#include "spooler.h"

namespace vok::test {

class Call;

// There is at most one at a time: the substitutes go to it. State that tests read or change while
// other threads call has to be left to those threads' own end.
class System {
  public:
    explicit System(const OsRelease& release = os::winXp);
    ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    // The one there is; ends the program when there is none.
    static System& current();
    // The same, null when there is none.
    static System* find();

    // Parts of the machine that most tests need; each returns this system.
    System& addPrinter(const std::string& name, const std::string& prefix = "DEMO");
    // The configuration library and the registry base key that it names.
    System& installConfig();
    // That, and logging switched on.
    System& startLog();
    // The spooler in a session of its own, a user at the console.
    System& separateSessions();

    // The driver directory with the version's subdirectory and a trailing backslash.
    std::string driverPath() const;
    std::string loggerKey() const;              // with the configuration library's base path
    std::string logPath() const;                // C:\DEMOVok.log
    std::vector<std::string> logLines() const;  // of logPath, clock field and CR LF removed

    OsRelease os;
    Recorder calls;
    Faults faults;
    Handles handles;
    Clock clock;
    Registry registry;
    FileSystem files;
    Mutexes mutexes;
    Spooler spooler;
    Desktop desktop;
    Processes processes;
    Sessions sessions;
    Pipes pipes;
    Modules modules;

    std::map<DWORD, std::string> messages;  // FormatMessageA's texts by error code
    bool greedyBuffers = false;  // given buffers are overwritten to their full given size
    long sids = 0;               // allocated and not freed
    std::function<void(DWORD)> onSleep;
    // What the library did that no correct program does: handles closed twice, waits without end.
    std::vector<std::string> complaints;

    // Gives the calling thread another id than its own; 0 takes it back.
    static void setThreadId(DWORD id);

    // For the substitutes.
    static DWORD threadId();
    bool closeHandle(Call& call, const void* handle, Kind kind);
    void fillGreedily(void* buffer, size_t size) const;
    void slept(DWORD milliseconds) const;

  private:
    friend class Call;
    void addCommonKeys();
    void hideNewerFunctions();

    CRITICAL_SECTION lock_;
};

}  // namespace vok::test
