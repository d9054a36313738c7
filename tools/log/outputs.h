// The accounts of a log: sinks that write as the jobs come, or at the end.
#ifndef VOK_LOG_OUTPUTS_H
#define VOK_LOG_OUTPUTS_H

#include <memory>

#include "assembler.h"
#include "options.h"
#include "writer.h"

namespace vok::log {

// For people: one line for each job, and what it all means.
std::unique_ptr<Sink> makeTable(Writer& writer, const Options& options);

// For programs.
std::unique_ptr<Sink> makeJson(Writer& writer, const Options& options);

// Trace events, for viewers of Chrome's trace format.
std::unique_ptr<Sink> makeTrace(Writer& writer);

// One page with a picture of the jobs over time.
std::unique_ptr<Sink> makePage(Writer& writer, const Options& options);

// Lets through to an account the jobs that were asked for.
std::unique_ptr<Sink> makeFilter(Sink& account, const Options& options);

}  // namespace vok::log

#endif
