// A log that grows: read as it is written, until somebody ends it.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "log_reader.h"

namespace vok::log {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::duration_cast;
using std::chrono::milliseconds;

constexpr unsigned pollMicroseconds = 200000;

volatile std::sig_atomic_t interrupted = 0;

// The next one ends the program at once.
void interrupt(int signal) {
    interrupted = 1;
    static_cast<void>(std::signal(signal, SIG_DFL));
}

// How long nobody has written to the file, by the system's own times.
milliseconds ageOf(const std::string& path) {
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(path, error);
    const auto age = fs::file_time_type::clock::now() - written;
    return error ? milliseconds(0) : std::max(duration_cast<milliseconds>(age), milliseconds(0));
}

class Following {
  public:
    Following(LogReader& reader, const std::string& path) : reader_(reader), path_(path) {}

    Summary untilInterrupted() {
        reader_.begin({path_});
        for (; interrupted == 0; usleep(pollMicroseconds)) {
            look();
            reader_.tellStanding(idle());
        }
        finishFile();
        Summary summary = reader_.end(idle());
        if (!began_) {
            summary.notLogs.emplace_back(path_, "it never was there");
        } else if (const std::string why = reader_.whyNoLog(); !why.empty()) {
            summary.notLogs.emplace_back(path_, why);
        }
        return summary;
    }

  private:
    void look() {
        if (!input_ && !open()) {
            return;
        }
        // Asked first: what was written before that is still to be read.
        const bool anew = input_->beganAnew();
        if (reader_.readLines(*input_)) {
            news_ = began_ ? Clock::now() : Clock::now() - ageOf(path_);
            warnOfNoLog();
        }
        began_ = true;
        if (anew) {
            say("was renamed, deleted or emptied: reading what has its name now");
            finishFile();
        }
    }

    bool open() {
        std::error_code error;
        if (!fs::exists(path_, error)) {
            if (!waits_) {
                say("is not there yet: waiting for it");
            }
            waits_ = true;
            return false;
        }
        input_ = std::make_unique<LogInput>(path_, true);
        waits_ = false;
        reader_.beginFile(0);
        return true;
    }

    void finishFile() {
        if (input_) {
            input_->endGrowth();
            reader_.readLines(*input_);
            input_.reset();
        }
    }

    void warnOfNoLog() {
        if (const std::string why = reader_.whyNoLog(); !why.empty() && !warned_) {
            say("no log so far: " + why);
            warned_ = true;
        }
    }

    void say(const std::string& text) const {
        static_cast<void>(std::fprintf(stderr, "vok-log: %s: %s\n", path_.c_str(), text.c_str()));
    }

    std::int64_t idle() const { return duration_cast<milliseconds>(Clock::now() - news_).count(); }

    LogReader& reader_;
    const std::string& path_;
    std::unique_ptr<LogInput> input_;
    Clock::time_point news_ = Clock::now();
    bool began_ = false;
    bool waits_ = false;
    bool warned_ = false;
};

}  // namespace

Summary follow(LogReader& reader, const std::string& path) {
#ifdef SIGBREAK
    constexpr int endings[] = {SIGINT, SIGTERM, SIGBREAK};
#else
    constexpr int endings[] = {SIGINT, SIGTERM};
#endif
    for (const int signal : endings) {
        static_cast<void>(std::signal(signal, interrupt));
    }
    return Following(reader, path).untilInterrupted();
}

}  // namespace vok::log
