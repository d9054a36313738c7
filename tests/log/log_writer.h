// Writes logs as the library would, job by job, in its own texts.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vok::test {

// How a log is written: the options of the library's logger.
struct LogOptions {
    bool clock = true;
    std::optional<unsigned> processId;
    std::optional<unsigned> threadId;
    bool traces = true;
    bool details = true;
};

class LogWriter {
  public:
    using Out = std::function<void(std::string_view)>;

    explicit LogWriter(Out out, LogOptions options = {});

    LogOptions& options() { return options_; }
    // Milliseconds since the day began; every line is one later than the one before.
    void setTime(std::int64_t time) { time_ = time; }
    // Somebody sets the clock; the tick counts, which begin shortly before zero, don't mind.
    void setClock(std::int64_t time) {
        clockSetBy_ += time - time_;
        time_ = time;
    }
    void wait(std::int64_t milliseconds) { time_ += milliseconds; }

    void detail(std::string_view text);
    void trace(std::string_view name);
    // A record of any category.
    void record(std::string_view category, std::string_view text);
    void raw(std::string_view text) { out_(text); }

    // Whole calls, as a job without failures has them. Handles are those of the job.
    void launchByPipe(const std::string& printer, unsigned dral, unsigned nemb);
    void launchByWindow(const std::string& printer, unsigned dral, unsigned nemb);
    void launch9x(const std::string& printer);
    void pipeEvent(const std::string& side, const std::string& event, unsigned handle,
                   const std::string& reply);
    void windowEvent(const std::string& side, const std::string& event, unsigned handle,
                     const std::string& reply);
    void event9x(const std::string& side, const std::string& event, const std::string& reply);

    // Beginnings of launches, for those that fail.
    void beginLaunch(const std::string& printer);
    void beginDral(const std::string& route);
    void beginNemb(const std::string& route);
    void startAsUser(const std::string& side, bool token = true);

    void pipeJob(const std::string& printer, unsigned handles, int pages,
                 const std::string& openReply = "YESPRINT");

  private:
    void traceEvent(const std::string& side, const std::string& family);
    void moduleName();
    void sessions();
    std::uint32_t tick() const;

    Out out_;
    LogOptions options_;
    std::int64_t time_ = 0;
    std::int64_t clockSetBy_ = 0;
    std::uint32_t launchTick_ = 0;
};

// As the library writes handles.
std::string handleText(unsigned handle);

}  // namespace vok::test
