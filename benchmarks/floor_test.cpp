// The library makes the calls that its job demands, and no other: those of the floor, with the same
// arguments and in the same order, and as many as are written down here.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>

#include "simulated_job.h"

namespace vok::bench {
namespace {

using test::CallRecord;
using test::Lines;

struct Made {
    Lines calls;
    LONG_PTR result;
    VKDATA record;
};

Made make(const std::string& file, const Case& one, Logging logging, bool ticking) {
    SimulatedJob job(file, one, logging, ticking);
    const LONG_PTR result = job.perform();
    Lines lines;
    for (const CallRecord& call : job.calls()) {
        lines.push_back(call.line());
    }
    return {lines, result, job.record()};
}

void expectSame(const Case& one, Logging logging, bool ticking) {
    SCOPED_TRACE(one.title() + ", logging " + nameOf(logging) + (ticking ? ", ticking" : ""));
    const Made library = make(test::productDll(), one, logging, ticking);
    const Made floor = make(floorDll(), one, logging, ticking);
    EXPECT_EQ(library.calls, floor.calls);
    EXPECT_EQ(library.result, floor.result);
    EXPECT_EQ(std::memcmp(&library.record, &floor.record, sizeof(VKDATA)), 0);
    // What the call was for has been done.
    if (!one.isGetter()) {
        EXPECT_GT(library.calls.size(), 20U);
        EXPECT_EQ(library.result, 1);
    }
}

// How many system calls a case makes with logging off, on, and with all header fields.
struct CallCount {
    size_t off;
    size_t on;
    size_t full;
    bool operator==(const CallCount&) const = default;
};
std::ostream& operator<<(std::ostream& out, const CallCount& count) {
    return out << "{" << count.off << ", " << count.on << ", " << count.full << "}";
}

const std::map<std::string, CallCount>& expectedCalls() {
    static const std::map<std::string, CallCount> all = {
        {"message launch", {143, 650, 669}},
        {"message DRAL open job", {93, 360, 366}},
        {"message DRAL start page", {92, 341, 346}},
        {"message DRAL close job", {96, 399, 407}},
        {"message DRAL cancel job", {96, 399, 407}},
        {"message NEMB open job", {93, 360, 366}},
        {"message NEMB page", {93, 360, 366}},
        {"message NEMB close job", {94, 361, 367}},
        {"message NEMB cancel job", {93, 360, 366}},
        {"message generic send", {90, 339, 344}},
        {"pipe launch", {152, 767, 792}},
        {"pipe DRAL open job", {96, 363, 369}},
        {"pipe DRAL start page", {94, 361, 367}},
        {"pipe DRAL close job", {101, 404, 412}},
        {"pipe DRAL cancel job", {101, 404, 412}},
        {"pipe NEMB open job", {97, 364, 370}},
        {"pipe NEMB page", {95, 362, 368}},
        {"pipe NEMB close job", {99, 384, 391}},
        {"pipe NEMB cancel job", {98, 383, 390}},
        {"pipe generic send", {93, 342, 347}},
        {"9x launch", {55, 302, 313}},
        {"9x DRAL open job", {41, 198, 204}},
        {"9x DRAL start page", {41, 198, 204}},
        {"9x DRAL close job", {42, 217, 224}},
        {"9x DRAL cancel job", {42, 217, 224}},
        {"9x NEMB open job", {41, 198, 204}},
        {"9x NEMB page", {40, 179, 184}},
        {"9x NEMB close job", {41, 198, 204}},
        {"9x NEMB cancel job", {41, 198, 204}},
        {"message VOKGetDral", {0, 0, 0}},
        {"message VOKGetNemb", {0, 0, 0}},
    };
    return all;
}

class CallsOf : public testing::TestWithParam<Case> {};

TEST_P(CallsOf, LoggingOff) {
    expectSame(GetParam(), Logging::off, false);
    expectSame(GetParam(), Logging::off, true);
}

TEST_P(CallsOf, LoggingOn) {
    expectSame(GetParam(), Logging::on, false);
    expectSame(GetParam(), Logging::on, true);
}

TEST_P(CallsOf, AllHeaderFields) {
    expectSame(GetParam(), Logging::full, false);
    expectSame(GetParam(), Logging::full, true);
}

// With every option read once a call, as when the clock moves.
size_t countCalls(const Case& one, Logging logging) {
    return make(test::productDll(), one, logging, true).calls.size();
}

TEST_P(CallsOf, AreAsManyAsEver) {
    const Case& one = GetParam();
    const CallCount made{countCalls(one, Logging::off), countCalls(one, Logging::on),
                         countCalls(one, Logging::full)};
    EXPECT_EQ(made, expectedCalls().at(one.title()));
}

INSTANTIATE_TEST_SUITE_P(Floor, CallsOf, testing::ValuesIn(cases()), [](const auto& parameter) {
    std::string name = parameter.param.title();
    std::erase_if(name, [](char letter) { return letter == ' '; });
    return name;
});

// GCC's, which doesn't ship, is larger; and so is what the runtime of GCC 14 brings.
#ifdef __clang__
constexpr std::uintmax_t largestLibrary = (_GLIBCXX_RELEASE < 14 ? 128U : 136U) * 1024;
#else
constexpr std::uintmax_t largestLibrary = 200U * 1024;
#endif

TEST(Size, OfTheLibraryIsKept) {
    EXPECT_LE(std::filesystem::file_size(test::shippedDll()), largestLibrary);
}

}  // namespace
}  // namespace vok::bench
