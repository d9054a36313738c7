// vok-bench calls | simulated | growth | live ROUTE | live-growth | load
#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <exception>
#include <string>

#include "programs.h"

namespace vok::bench {

double memoryInUse() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.WorkingSetSize);
}

namespace {

constexpr int misused = 2;

int run(int count, char** words) {
    const std::string what = count > 1 ? words[1] : "";
    if (what == "calls") {
        return countCalls();
    }
    if (what == "simulated") {
        return timeSimulated();
    }
    if (what == "growth") {
        return growSimulated();
    }
    if (what == "live" && count == 3) {
        return timeLive(words[2]);
    }
    if (what == "live-growth") {
        return growLive();
    }
    if (what == "load") {
        return timeLoading();
    }
    std::fprintf(stderr, "vok-bench: say what to measure\n");
    return misused;
}

}  // namespace
}  // namespace vok::bench

int main(int count, char** words) {
    try {
        return vok::bench::run(count, words);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "vok-bench: %s\n", failure.what());
        return 1;
    }
}
