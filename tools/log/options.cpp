#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "log_input.h"

namespace vok::log {

namespace {

constexpr const char* description =
    "Reads logs of the library and tells what became of each print job: how the companions were\n"
    "launched, which events they were sent, what they answered and how long it took, what failed\n"
    "first and what that means. Files may be of any size and compressed by gzip; \"-\" is the\n"
    "standard input.\n";

constexpr const char* footer =
    "\nExit status: 0 no problem was found in the log, 1 problems were found, 2 misused, or a "
    "file\n"
    "can't be read or written.\n";

void addFormats(CLI::App& app, Options& options) {
    const auto flag = [&](const char* name, Format format, const char* help) {
        return app.add_flag_callback(name, [&options, format] { options.format = format; }, help);
    };
    CLI::Option* json = flag("--json", Format::Json, "an account for programs");
    CLI::Option* trace =
        flag("--trace", Format::Trace, "Chrome trace events, for Perfetto and its like");
    CLI::Option* html = flag("--html", Format::Html, "one page with a zoomable timeline");
    json->excludes(trace)->excludes(html);
    trace->excludes(html);
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// How long somebody waited for the job.
std::int64_t lengthOf(const Job& job) {
    return job.duration().value_or(0) + job.silent.value_or(0);
}

bool isOfKind(const Job& job, const std::string& kind) {
    if (kind == "dral" || kind == "nemb") {
        const Side side = kind == "dral" ? Side::Dral : Side::Nemb;
        return std::ranges::find(job.findings, side, &Finding::side) != job.findings.end();
    }
    return kind == toText(job.result()) || kind == toText(job.weight()) ||
           std::ranges::any_of(job.findings, [&](const Finding& finding) {
               return kind == textOf(finding.id).name;
           });
}

// What --only understands.
bool isKind(const std::string& word) {
    constexpr std::string_view others[] = {"problem", "warning", "dral", "nemb"};
    const auto among = [&](const auto& known) {
        return std::ranges::find(known, std::string_view(word)) != std::end(known);
    };
    return among(words<JobEnd>) || among(others) ||
           std::ranges::any_of(findings(), [&](const auto& text) { return word == text.name; });
}

bool isWanted(const Job& job, const Options& wanted) {
    const bool timed = job.start != noTime;
    if ((wanted.problemsOnly && job.weight() == Weight::Note) ||
        lower(job.printer).find(lower(wanted.printer)) == std::string::npos ||
        (wanted.since != noTime && (!timed || job.end < wanted.since)) ||
        (wanted.until != noTime && (!timed || job.start > wanted.until))) {
        return false;
    }
    return wanted.only.empty() || std::ranges::any_of(wanted.only, [&](const std::string& kind) {
               return isOfKind(job, kind);
           });
}

class JobFilter final : public Sink {
  public:
    JobFilter(Sink& account, const Options& options) : account_(account), options_(options) {}

    void job(const Job& job) override {
        if (!isWanted(job, options_)) {
            return;
        }
        if (options_.slowest == 0) {
            return account_.job(job);
        }
        slowest_.insert(std::ranges::upper_bound(slowest_, lengthOf(job), std::greater(), lengthOf),
                        job);
        if (slowest_.size() > options_.slowest) {
            slowest_.pop_back();
        }
    }

    void finish(const Summary& summary) override {
        for (const Job& slow : slowest_) {
            account_.job(slow);
        }
        account_.finish(summary);
    }

  private:
    Sink& account_;
    const Options& options_;
    std::vector<Job> slowest_;
};

void addFilters(CLI::App& app, Options& wanted) {
    const auto time = [&app](const char* name, Time& place, const char* help) {
        app.add_option_function<std::string>(
            name,
            [&place, name](const std::string& text) {
                place = timeIn(text);
                if (place == noTime) {
                    throw CLI::ValidationError(
                        name, "no time: " + text + "; write it as 2026/03/07-09:05");
                }
            },
            help);
    };
    app.add_option("--printer", wanted.printer, "only jobs of printers with this in their name");
    time("--since", wanted.since, "only jobs that were not over then, as in 2026/03/07-09:05");
    time("--until", wanted.until, "only jobs that had begun by then");
    app.add_option("--only", wanted.only,
                   "only jobs with this result (open, refused, ...), weight (problem, warning), "
                   "companion that something is said of (dral, nemb) or message (log-...)")
        ->check([](const std::string& word) {
            return isKind(word) ? std::string()
                                : "no result, weight, companion or message: " + word;
        })
        ->allow_extra_args(false);  // what follows the word is a log
    app.add_option("--slowest", wanted.slowest, "only so many jobs, the slowest first")
        ->check(CLI::Range(1, 100));
}

// Rows come as the log grows, so the account has to be one that needs no end.
void checkFollow(const Options& options) {
    const bool one = options.files.size() == 1 && options.files.front() != LogInput::standardInput;
    if (options.follow && !one) {
        throw CLI::ValidationError("--follow", "follows one log, which is named as a file");
    }
    if (options.follow && (options.format != Format::Table || options.slowest > 0 ||
                           options.output != Writer::standardOutput)) {
        throw CLI::ValidationError(
            "--follow",
            "writes the table's rows as they come: --json, --trace, --html, --slowest "
            "and -o need the log's end");
    }
}

}  // namespace

std::optional<Options> parseOptions(int count, const char* const* words, int& status) {
    Options options;
    CLI::App app(description, "vok-log");
    app.footer(footer);
    app.allow_windows_style_options(false);  // paths may begin with a slash
    app.set_version_flag("--version", VOK_VERSION);
    app.add_option("FILE", options.files, "log files, read one after the other");
    addFormats(app, options);
    app.add_option("-o,--output", options.output, "where to write (default: standard output)");
    app.add_flag("--problems", options.problemsOnly, "only jobs in which something went wrong");
    app.add_flag("--joined", options.joined,
                 "the files are parts of one log: jobs may reach from one into the next");
    app.add_flag("--follow", options.follow,
                 "show the jobs of a log that grows as they end, and hung ones while they hang; "
                 "Ctrl-C ends it");
    app.add_option("--slow", options.slowSeconds, "seconds from which on an answer is slow")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--silent", options.silentSeconds,
                   "seconds of silence from which on a job that has no end hangs")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    addFilters(app, options);
    app.add_option("--jobs", options.maxJobs, "how many jobs the page shows at most")
        ->check(CLI::Range(1, 20000))
        ->capture_default_str();
    app.add_flag("!--no-progress", options.progress, "no progress bar on the terminal");
    app.add_flag("--messages", options.messages,
                 "write all messages with their meaning, as Markdown, and read nothing");
    try {
        app.parse(count, words);
        if (options.files.empty() && !options.messages) {
            throw CLI::RequiredError("FILE");
        }
        checkFollow(options);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? ExitNoProblem : ExitMisused;
        return std::nullopt;
    }
    return options;
}

std::unique_ptr<Sink> makeFilter(Sink& account, const Options& options) {
    return std::make_unique<JobFilter>(account, options);
}

}  // namespace vok::log
