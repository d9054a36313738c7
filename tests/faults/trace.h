// The recorded calls that decide what an export answers, followed one by one.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "sim/sim.h"

namespace vok::test {

// Whether a call decides what an export answers: neither the logging's nor the runtime's.
bool decides(const CallRecord& call);

class Trace {
  public:
    explicit Trace(const System& system);

    // The result of the next deciding call, which has to be `name` with `part` among its
    // arguments; from the first one that is not, the trace is broken and every result is "0".
    std::string take(std::string_view name, const std::string& part = "");
    bool nextIs(std::string_view name) const;
    bool isBroken() const { return !broken_.empty(); }

    // What did not go as it should; empty for a trace that was followed to its end.
    std::string problem() const;

  private:
    std::vector<const CallRecord*> calls_;
    size_t next_ = 0;
    std::string broken_;
};

// Results as records show them.
bool succeeded(const std::string& result);      // neither zero nor null
LONG_PTR numberIn(const std::string& result);   // before the note
HANDLE handleIn(const std::string& text);       // "pipe#1", "null", "invalid"
std::string noteIn(const std::string& result);  // behind "-> "; empty when there is none
bool hasError(const std::string& result, DWORD error);

}  // namespace vok::test
