// The trace of a function's entry and exit.
#pragma once

#include <cstdint>
#include <string>

namespace vok {

class BasicLogger;
class LogCategory;

// Writes "+name" when it is made and "-name" when it goes; what its thread logs in between is
// indented one blank further. Logger and category must outlive it.
class FunctionTrace {
  public:
    // Not active: nothing is written. Throws Win32Exception when the record can't be written.
    FunctionTrace(BasicLogger* logger, const LogCategory* category, const std::string& name,
                  std::uint32_t level, bool active);

    // Lets no exception out.
    ~FunctionTrace();

    FunctionTrace(const FunctionTrace&) = delete;
    FunctionTrace& operator=(const FunctionTrace&) = delete;

    // The return code to be written with the exit, as text.
    void setReturnCode(const std::string& rc) { rc_ = rc; }

  private:
    std::string name_;
    const LogCategory* category_;
    std::string rc_;
    bool enabled_ = false;
    BasicLogger* logger_;
    std::uint32_t level_ = 0;
};

// Writes the trace of the function `name` under the installed logger's category, entry and exit at
// once, if the options ask for it. Throws Win32Exception when no logger is installed or the record
// can't be written: callers log or drop that and go on.
void traceCall(const char* name);

// traceCall, its Win32Exception dropped.
void traceCallQuietly(const char* name);

}  // namespace vok
