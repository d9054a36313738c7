/**
 * @file live_test.h
 * The fixture of the live tests: the library as it ships, companions as real processes, real
 * windows, pipes, registry and log. Nothing is replaced but, for the pipe route, the session that
 * the library sees itself in.
 */
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "job/vok_library.h"
#include "live_job.h"
#include "live_machine.h"
#include "live_program.h"

namespace vok::test {

/// How long something took. Not by GetTickCount, which stands still for half a second and more
/// while Wine's server, which moves it, waits for a busy processor.
class StopWatch {
  public:
    [[nodiscard]] long long milliseconds() const {
        using std::chrono::milliseconds;
        return std::chrono::duration_cast<milliseconds>(Clock::now() - start_).count();
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
};

class LiveTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    LiveMachine& machine() { return *machine_; }

    /// The library, loaded once for each route.
    const sample::VokCalls& library(Route route);
    HMODULE module(Route route);

    /// Has companions answer by a script, see reply_script.h.
    static void script(const char* companion, const char* event, const std::string& replies);

    /// "DRAL OPENJOB by pipe (job 1, page 0): answers 1": what the companions were told and said,
    /// in the order of events.
    [[nodiscard]] std::vector<std::string> account() const;

    /// The account's line, as it is expected.
    static std::string told(const std::string& companion, const std::string& event, Route route,
                            DWORD job, DWORD page, LONG reply);

    /// Expects lines that end with these texts in the library's log, in this order, others between.
    void expectLogged(const std::vector<std::string>& texts) const;
    void expectNotLogged(const std::string& text) const;

    /// Waits for what has to happen some time. The bound is for what never does.
    static bool waitFor(const std::function<bool()>& happened);

    /// By the pipe route a companion is reached before it has the windows by which it is found.
    static bool waitForWindows(const std::string& printer);

  private:
    std::unique_ptr<LiveMachine> machine_;
    std::unique_ptr<sample::VokLibrary> message_;
    std::unique_ptr<sample::VokLibrary> pipe_;
};

/// A test for each route that the version has.
class LiveRouteTest : public LiveTest, public testing::WithParamInterface<Route> {
  protected:
    [[nodiscard]] static bool byPipe() { return GetParam() == Route::Pipe; }

    /// NEMB's reply to anything but the opening, as it comes back.
    [[nodiscard]] static LONG fromNemb(LONG reply) { return byPipe() ? LONG{YESPRINT} : reply; }

    const sample::VokCalls& library() { return LiveTest::library(GetParam()); }
};

/// A handle as the log shows it.
std::string logged(HANDLE handle);

/// A thread that makes calls; the test ends it by letting the calls end.
class Caller {
  public:
    explicit Caller(std::function<LONG()> call);
    ~Caller();
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    [[nodiscard]] bool done() const;
    /// Waits for the end of the call, bounded. False when it does not end; the destructor waits for
    /// ever, and a hang is the watchdog's.
    [[nodiscard]] bool join() const;
    [[nodiscard]] LONG result() const { return result_; }

  private:
    static DWORD WINAPI run(void* caller);

    std::function<LONG()> call_;
    LONG result_ = 0;
    HANDLE thread_;
};

}  // namespace vok::test
