// Calls of the six exports in worlds made up by seeds. VOK_FUZZ_SECONDS lets it run for as long
// with new seeds, VOK_FUZZ_SEED repeats one.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "faults/known_texts.h"
#include "faults/watched_heap.h"
#include "fuzz/random_world.h"

namespace vok::test {
namespace {

constexpr uint64_t usualSeeds = 4000;
constexpr size_t problemsShown = 10;

// Seeds that once found something, run first: a thread's first exception without memory.
constexpr uint64_t keptSeeds[] = {388};

uint64_t currentSeed = 0;
LPTOP_LEVEL_EXCEPTION_FILTER reportCrash = nullptr;

LONG WINAPI nameSeed(EXCEPTION_POINTERS* exception) {
    std::fprintf(stderr, "seed %llu\n", static_cast<unsigned long long>(currentSeed));
    return reportCrash ? reportCrash(exception) : EXCEPTION_CONTINUE_SEARCH;
}

using Problems = std::vector<std::string>;

// The library's runtime gives up.
void nameSeedAndAbort() {
    std::fprintf(stderr, "aborted, seed %llu\n", static_cast<unsigned long long>(currentSeed));
    std::abort();
}

RestartedLibrary& library() {
    static RestartedLibrary one([] {
        auto overrides = heap::overrides();
        overrides.emplace("abort", reinterpret_cast<void*>(nameSeedAndAbort));
        return overrides;
    }());
    return one;
}

void checkRecord(const RandomJob& job, const std::optional<VKDATA>& before, Problems& problems) {
    if (!job.isIntact()) {
        problems.emplace_back("memory before the record was written to");
    }
    if (!before) {
        return;
    }
    const VKDATA& now = *job.record();
    if (((now.epDoc ^ before->epDoc) & ~DWORD{VOK_EPDOC_OPENJOB}) != 0) {
        problems.emplace_back("a foreign bit of epDoc was changed");
    }
    const bool dralMode = now.dralMode == before->dralMode || now.dralMode == VOK_MODE_PIPE ||
                          now.dralMode == VOK_MODE_WINDOW;
    const bool nembMode = now.nembMode == before->nembMode || now.nembMode == VOK_MODE_PIPE ||
                          now.nembMode == VOK_MODE_WINDOW;
    if (!dralMode || !nembMode) {
        problems.emplace_back("a mode that is none");
    }
    if (std::memcmp(now.dralTitleSuffix, before->dralTitleSuffix, VOK_TITLE_SUFFIX_SIZE) != 0) {
        problems.emplace_back("the title suffix was changed");
    }
}

// A record in one write, with its end.
void checkWrite(const CallRecord& call, Problems& problems) {
    const size_t begin = call.arguments.find('"') + 1;
    const size_t end = call.arguments.rfind('"');
    const std::string whole = std::to_string(end - begin + 2);
    if (call.arguments.substr(end + 1) != ", " + whole + ", out, null") {
        problems.push_back("no whole line: " + call.arguments);
    }
}

// What the job's own handles give reason to complain of is no concern; the library's own is.
void checkMachine(const System& system, Problems& problems) {
    for (const CallRecord& call : system.calls.all()) {
        if (call.name == "WriteFile" && call.arguments.starts_with("file#")) {
            checkWrite(call, problems);
        }
    }
    for (const std::string& complaint : system.complaints) {
        if (complaint.find("closed before") != std::string::npos ||
            complaint.find("for ever") != std::string::npos) {
            problems.push_back("complaint: " + complaint);
        }
    }
    for (const Kind kind : {Kind::file, Kind::mutex, Kind::options}) {
        if (system.handles.countOpen(kind) != 0) {
            problems.push_back(std::string("left open: ") + kindName(kind));
        }
    }
    if (system.sids != 0 || system.mutexes.countHeld() != 0) {
        problems.emplace_back("SIDs left or a mutex held");
    }
}

Problems runSeed(uint64_t seed) {
    currentSeed = seed;
    Problems problems;
    Chance chance(seed);
    System system(randomRelease(chance));
    fillMachine(chance, system);
    const RandomJob job(chance, system);
    const auto before = job.record() ? std::optional<VKDATA>(*job.record()) : std::nullopt;
    {
        const Started started(library());
        system.calls.clear();
        system.faults.clear();
        armFaults(chance, system);
        if (chance.oneIn(4)) {
            heap::fail(1 + chance.below(300), chance.oneIn(4) ? Lasting::forEver : Lasting::once);
        }
        for (size_t calls = 1 + chance.below(8); calls > 0; --calls) {
            try {
                callAny(chance, *started, job);
            } catch (const std::bad_alloc&) {
                // Of all exceptions this one may leave.
            } catch (...) {
                problems.emplace_back("an exception other than std::bad_alloc");
            }
        }
        heap::failNothing();
        system.faults.clear();
    }
    checkRecord(job, before, problems);
    checkMachine(system, problems);
    for (const std::string& damage : heap::damage()) {
        problems.push_back("heap: " + damage);
    }
    heap::clear();
    return problems;
}

class Fuzz : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { reportCrash = ::SetUnhandledExceptionFilter(nameSeed); }
    static void TearDownTestSuite() { ::SetUnhandledExceptionFilter(reportCrash); }

    void expectFine(uint64_t seed) {
        const Problems problems = runSeed(seed);
        ++runs_;
        if (!problems.empty() && ++found_ <= problemsShown) {
            ADD_FAILURE() << "VOK_FUZZ_SEED=" << seed << ": " << problems.front();
        }
    }

    size_t runs_ = 0;
    size_t found_ = 0;
};

TEST_F(Fuzz, KeptSeeds) {
    for (const uint64_t seed : keptSeeds) {
        expectFine(seed);
    }
}

TEST_F(Fuzz, NewSeeds) {
    if (const char* one = std::getenv("VOK_FUZZ_SEED")) {
        expectFine(std::strtoull(one, nullptr, 10));
        return;
    }
    uint64_t seed = 1;
    const char* seconds = std::getenv("VOK_FUZZ_SECONDS");
    if (!seconds) {
        for (; seed <= usualSeeds; ++seed) {
            expectFine(seed);
        }
    } else {
        using Clock = std::chrono::steady_clock;
        seed = static_cast<uint64_t>(Clock::now().time_since_epoch().count());
        std::printf("first seed: %llu\n", static_cast<unsigned long long>(seed));
        const auto end = Clock::now() + std::chrono::seconds(std::atoi(seconds));
        for (; Clock::now() < end; ++seed) {
            expectFine(seed);
        }
    }
    std::printf("seeds up to %llu, runs: %zu, with problems: %zu\n",
                static_cast<unsigned long long>(seed - 1), runs_, found_);
}

}  // namespace
}  // namespace vok::test
