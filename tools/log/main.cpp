// vok-log: what became of the jobs in a log.

#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "embedded.h"
#include "log_reader.h"
#include "options.h"
#include "progress.h"

namespace vok::log {
namespace {

std::unique_ptr<Sink> makeOutput(const Options& options, Writer& writer) {
    switch (options.format) {
        case Format::Json:
            return makeJson(writer, options);
        case Format::Trace:
            return makeTrace(writer);
        case Format::Html:
            return makePage(writer, options);
        default:
            return makeTable(writer, options);
    }
}

// Nothing is opened for writing before this has returned.
void refuseToHarmInputs(const Options& options) {
    const bool toFile = options.output != Writer::standardOutput;
    const auto output = toFile ? identityOf(options.output) : identityOf(fileno(stdout));
    for (const std::string& file : options.files) {
        const auto input =
            file == LogInput::standardInput ? identityOf(fileno(stdin)) : identityOf(file);
        if (input && input == output) {
            throw std::runtime_error((toFile ? options.output : "the standard output") +
                                     " is the log itself, which is never written to");
        }
    }
}

int readLogs(const Options& options) {
    // A file that isn't there must not cost the account of an earlier run.
    for (const std::string& file : options.files) {
        if (file != LogInput::standardInput && !options.follow) {
            const LogInput tried(file);
        }
    }
    Writer writer(options.output);
    const std::unique_ptr<Sink> output = makeOutput(options, writer);
    const ReaderOptions reading = {.slow = std::llround(options.slowSeconds * 1000),
                                   .silent = std::llround(options.silentSeconds * 1000),
                                   .keepLines = options.format == Format::Html,
                                   .growing = options.follow,
                                   .joined = options.joined};
    const std::unique_ptr<Sink> filter = makeFilter(*output, options);
    ProgressBar bar(options.files, options.progress && !options.follow);
    LogReader reader(reading, *filter, [&](const Progress& progress) { bar.show(progress); });
    const Summary summary =
        options.follow ? follow(reader, options.files.front()) : reader.read(options.files);
    writer.close();
    for (const auto& [file, reason] : summary.notLogs) {
        static_cast<void>(
            std::fprintf(stderr, "vok-log: %s: no log: %s\n", file.c_str(), reason.c_str()));
    }
    return !summary.notLogs.empty() ? ExitMisused
           : summary.hasProblems()  ? ExitProblems
                                    : ExitNoProblem;
}

int run(const Options& options) {
    refuseToHarmInputs(options);
    if (!options.messages) {
        return readLogs(options);
    }
    Writer writer(options.output);
    writer.write(messagesPage);
    writer.close();
    return ExitNoProblem;
}

}  // namespace
}  // namespace vok::log

#ifdef _WIN32
// Has the C run-time write out the wildcards of the command line, as shells do elsewhere.
extern "C" {
int _dowildcard = -1;
}
#endif

int main(int count, char** words) {
    using namespace vok::log;
    int status = ExitNoProblem;
    const auto options = parseOptions(count, words, status);
    if (!options) {
        return status;
    }
    try {
        return run(*options);
    } catch (const std::exception& failure) {
        static_cast<void>(std::fprintf(stderr, "vok-log: %s\n", failure.what()));
        return ExitMisused;
    }
}
