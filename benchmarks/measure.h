// Timing two things side by side, and telling the outcome as one line of JSON.
#pragma once
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace vok::bench {

using Work = std::function<void()>;

// Microseconds since some moment.
double microseconds();

double quantile(std::vector<double> values, double share);

// Of two pieces of work done in turns. Times are medians in microseconds. The ratio is the median
// of the blocks' ratios, its spread reaches from their first to their third quartile.
struct Comparison {
    double library = 0;
    double floor = 0;
    double ratio = 0;
    double low = 0;
    double high = 0;
    size_t blocks = 0;
};

// One of the two: `prepare` is not timed, `run` is.
struct Side {
    Work prepare;
    Work run;
};
// Both in pairs, after `warmUp` pairs that don't count; in blocks of eight pairs, whose ratio is
// that of their sums. Who comes first in a pair is left to chance: the system takes turns of its
// own, every other call on another processor, and a call takes one time or a quarter more. At least
// so many pairs; more, for a few seconds, while the machine is so busy that the median would be
// uncertain.
Comparison compare(size_t warmUp, size_t pairs, const Side& library, const Side& floor);

// A line of the results: {"kind": "time", "case": "…", …}.
class Line {
  public:
    explicit Line(const std::string& kind);
    Line& text(const char* name, const std::string& value);
    Line& number(const char* name, double value);
    Line& comparison(const Comparison& value);
    Line& raw(const char* name, const std::string& json);
    void print() const;

  private:
    std::string json_;
};

}  // namespace vok::bench
