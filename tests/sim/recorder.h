// What the library asked of the system, in order.
#pragma once
#include <windows.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

struct CallRecord {
    std::string name;
    std::string arguments;  // joined by ", "
    std::string result;     // with " (error 5)" behind it when the call failed with a last error
    DWORD thread = 0;
    std::string line() const { return name + "(" + arguments + ") = " + result; }
};

// Calls of some functions (GetTickCount, GetLastError, critical sections, GetCurrentThreadId, …)
// are so frequent, and so often the runtime's own, that they are counted but not recorded unless a
// test asks for them by name.
class Recorder {
  public:
    bool on = true;  // off: only counts, for millions of calls

    bool records(std::string_view name) const;
    void recordAlso(std::string_view name) { also_.emplace(name); }

    const std::vector<CallRecord>& all() const { return records_; }
    std::vector<std::string> lines() const;
    std::vector<std::string> names() const;
    // Lines of one function's calls.
    std::vector<std::string> linesOf(std::string_view name) const;
    // How often a function was called since the last clear, recorded or not.
    size_t count(std::string_view name) const;
    void clear();

    // For the substitutes.
    void counted(std::string_view name) { ++counts_[name]; }
    size_t begin(std::string_view name, std::string arguments);
    void end(size_t index, std::string result);

  private:
    std::vector<CallRecord> records_;
    std::map<std::string_view, size_t> counts_;
    std::set<std::string, std::less<>> also_;
    size_t generation_ = 0;  // records made before the last clear
};

}  // namespace vok::test
