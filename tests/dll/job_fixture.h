// What the tests of the library as it ships have in common: a job on a simulated system.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "sim/guarded_bytes.h"
#include "sim/sim.h"

namespace vok::test {

inline constexpr DWORD openJobFlag = VOK_EPDOC_OPENJOB;

enum class Log { on, off };

// A system with the printer "Office" and the user "at the console", the library loaded on it, and
// what one job passes to it. Logging off means: there is no configuration library, so that the
// calls are those of the library's own work.
class Job {
  public:
    explicit Job(const OsRelease& os, Log log = Log::on);

    BOOL launch(const char* portName = "LPT1:") {
        return library.launchXFiles("Office", portName, &record);
    }
    LONG tellDral(DWORD messageId) {
        return library.sendDralMsg(dralBlock.data(), messageId, &record);
    }
    LONG tellNemb(DWORD messageId) {
        return library.sendNembMsg(nembBlock.data(), messageId, &record);
    }

    // What was logged since the last time, without clock and category.
    Lines newLines();
    void expectNewLines(const Lines& expected);

    // The calls since the last time, with logging off, without the four of the frame.
    Lines newCalls();
    void expectNewCalls(const Lines& expected);

    // Every handle is closed but these, and none wrongly. The system's libraries stay loaded.
    void expectNothingOpenBut(const Lines& left = {}) const;

    System system;
    LoadedLibrary library;
    VKDATA record{};
    GuardedBytes dralBlock;  // 1, 2, 3, …
    GuardedBytes nembBlock;  // "Office", NUL, 8, 9, …

  private:
    size_t linesSeen_ = 0;
};

// Runs the check with a fresh job on each of the systems.
template <class AnyJob = Job, class Systems, class Check>
void onEach(const Systems& systems, const Check& check) {
    for (const OsRelease& os : systems) {
        SCOPED_TRACE(os);
        AnyJob job(os);
        check(job);
    }
}

// A zeroed record whose suffix has no NUL, where memory ends behind it.
GuardedBytes recordWithoutNul();

// Lines one after another.
Lines operator+(Lines first, const Lines& second);

// "+name", "-name".
Lines traceOf(const std::string& name);

}  // namespace vok::test
