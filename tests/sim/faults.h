// Failures on demand: of the k-th call that can fail at all, or of the n-th call of one function.
#pragma once
#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

// One way in which a function fails.
struct Failure {
    LONG_PTR result = 0;  // what it returns
    DWORD error = 0;      // the last error it leaves; 0: none
    DWORD count = 0;      // for reads and writes: the bytes moved all the same
};

// The ways in which a function really fails; empty for one that cannot.
const std::vector<Failure>& failuresOf(std::string_view function);
inline size_t failureCount(std::string_view function) {
    return failuresOf(function).size();
}
// Every function with at least one failure.
std::vector<std::string_view> failingFunctions();

enum class Lasting { once, forEver };

class Faults {
  public:
    // Fails the k-th call (from 1, counted from now over all functions that can fail) in the given
    // way; a function with fewer ways takes its last one.
    void failCall(size_t k, size_t way = 0, Lasting lasting = Lasting::once);
    // Fails the n-th call (from 1, counted from now) of one function.
    void fail(std::string_view function, size_t way = 0, size_t n = 1,
              Lasting lasting = Lasting::once);
    void fail(std::string_view function, Failure failure, size_t n = 1,
              Lasting lasting = Lasting::once);
    void clear();

    size_t fired() const { return fired_; }                  // failures given since clear
    size_t failableCalls() const { return failableCalls_; }  // calls that could have failed

    // For the substitutes: the failure that this call is to give, if any.
    std::optional<Failure> next(std::string_view function);

  private:
    struct Armed {
        std::string function;  // empty: any
        size_t remaining;      // calls until it fires
        Lasting lasting;
        size_t way;
        std::optional<Failure> own;
    };
    bool due(Armed& armed, std::string_view function);

    std::vector<Armed> armed_;
    size_t fired_ = 0;
    size_t failableCalls_ = 0;
};

}  // namespace vok::test
