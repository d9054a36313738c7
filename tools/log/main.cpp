// vok-log: what became of the jobs in a log.

#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "findings.h"
#include "html_output.h"
#include "json_output.h"
#include "log_reader.h"
#include "options.h"
#include "progress.h"
#include "table_output.h"
#include "trace_output.h"
#include "writer.h"

namespace vok::log {
namespace {

std::unique_ptr<Sink> makeOutput(const Options& options, Writer& writer) {
    switch (options.format) {
        case Format::Json:
            return std::make_unique<JsonOutput>(writer, options.problemsOnly, options.files);
        case Format::Trace:
            return std::make_unique<TraceOutput>(writer);
        case Format::Html:
            return std::make_unique<HtmlOutput>(writer, options.maxJobs, options.problemsOnly);
        default:
            return std::make_unique<TableOutput>(writer, options.problemsOnly);
    }
}

int readLogs(const Options& options) {
    // A file that isn't there must not cost the account of an earlier run.
    for (const std::string& file : options.files) {
        if (file != LogInput::standardInput) {
            const LogInput tried(file);
        }
    }
    Writer writer(options.output);
    const std::unique_ptr<Sink> output = makeOutput(options, writer);
    ReaderOptions reading;
    reading.assembler.slow = std::llround(options.slowSeconds * 1000);
    reading.assembler.keepLines = options.format == Format::Html;
    reading.joined = options.joined;
    Sink* const sinks[] = {output.get()};
    ProgressBar bar(options.files, options.progress);
    LogReader reader(reading, sinks, [&](const Progress& progress) { bar.show(progress); });
    const Summary summary = reader.read(options.files);
    writer.close();
    return summary.hasProblems() ? ExitProblems : ExitNoProblem;
}

int run(const Options& options) {
    if (!options.messages) {
        return readLogs(options);
    }
    Writer writer(options.output);
    writer.write(findingsAsMarkdown());
    writer.close();
    return ExitNoProblem;
}

}  // namespace
}  // namespace vok::log

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
