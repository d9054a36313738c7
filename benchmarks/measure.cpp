#include "measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

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

constexpr double half = 0.5;
constexpr double quarter = 0.25;
constexpr size_t blockOfPairs = 8;

// Whether the median's standard error is above half a percent, with time left to lower it. Looked
// at after every so many blocks.
bool isUncertain(const std::vector<double>& ratios, double begin) {
    constexpr double longest = 6e6;
    constexpr double bearable = 0.005;
    constexpr size_t between = 10;
    if (microseconds() - begin > longest) {
        return false;
    }
    if (ratios.size() % between != 0) {
        return true;
    }
    const double spread = quantile(ratios, 1 - quarter) - quantile(ratios, quarter);
    return 0.93 * spread / std::sqrt(static_cast<double>(ratios.size())) > bearable;
}

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
    std::minstd_rand chance;
    const double begin = microseconds();
    for (size_t i = 0; i < warmUp + pairs || isUncertain(ratios, begin); i += blockOfPairs) {
        double ours = 0;
        double least = 0;
        for (size_t pair = 0; pair < blockOfPairs; ++pair) {
            const bool libraryFirst = chance() % 2 == 0;
            const double first = timeOf(libraryFirst ? library : floor);
            const double second = timeOf(libraryFirst ? floor : library);
            libraryTimes.push_back(libraryFirst ? first : second);
            floorTimes.push_back(libraryFirst ? second : first);
            ours += libraryTimes.back();
            least += floorTimes.back();
        }
        if (i >= warmUp) {
            ratios.push_back(ours / least);
        }
    }
    return {quantile(libraryTimes, half), quantile(floorTimes, half),    quantile(ratios, half),
            quantile(ratios, quarter),    quantile(ratios, 1 - quarter), ratios.size()};
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
        .number("blocks", static_cast<double>(value.blocks));
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
