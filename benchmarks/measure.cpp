#include "measure.h"

#include <algorithm>
#include <cstdio>

namespace vok::bench {

double microseconds() {
    static const double perMicrosecond = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart) / 1e6;
    }();
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) / perMicrosecond;
}

double quantile(std::vector<double> values, double share) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

namespace {

double timeOf(const Side& side) {
    if (side.prepare) {
        side.prepare();
    }
    const double begin = microseconds();
    side.run();
    return microseconds() - begin;
}

}  // namespace

Comparison compare(size_t warmUp, size_t pairs, const Side& library, const Side& floor) {
    std::vector<double> libraryTimes;
    std::vector<double> floorTimes;
    std::vector<double> ratios;
    for (size_t i = 0; i < warmUp + pairs; ++i) {
        const double ours = timeOf(library);
        const double least = timeOf(floor);
        if (i >= warmUp) {
            libraryTimes.push_back(ours);
            floorTimes.push_back(least);
            ratios.push_back(ours / least);
        }
    }
    constexpr double half = 0.5;
    constexpr double quarter = 0.25;
    return {quantile(libraryTimes, half), quantile(floorTimes, half),    quantile(ratios, half),
            quantile(ratios, quarter),    quantile(ratios, 1 - quarter), pairs};
}

Line::Line(const std::string& kind) : json_("{\"kind\": \"" + kind + "\"") {}

Line& Line::text(const char* name, const std::string& value) {
    return raw(name, "\"" + value + "\"");
}

Line& Line::number(const char* name, double value) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.6g", value);
    return raw(name, digits);
}

Line& Line::comparison(const Comparison& value) {
    return number("library", value.library)
        .number("floor", value.floor)
        .number("ratio", value.ratio)
        .number("low", value.low)
        .number("high", value.high)
        .number("pairs", static_cast<double>(value.pairs));
}

Line& Line::raw(const char* name, const std::string& json) {
    json_ += std::string(", \"") + name + "\": " + json;
    return *this;
}

void Line::print() const {
    std::printf("%s}\n", json_.c_str());
    std::fflush(stdout);
}

}  // namespace vok::bench
