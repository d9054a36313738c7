// What is measured without a real system behind the library: calls, our own code, growth, threads.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "instant.h"
#include "measure.h"
#include "programs.h"
#include "simulated_job.h"
#include "threads.h"

namespace vok::bench {
namespace {

constexpr Logging allLogging[] = {Logging::off, Logging::on, Logging::full};

// A module on the instant machine.
class InstantModule {
  public:
    explicit InstantModule(const std::string& file, const std::map<std::string, void*>& more = {})
        : module_(file, VOK_MODEL_PREFIX "vok.dll", answersWith(more)) {
        module_.attach();
        exports_ = exportsOf(module_.module());
    }
    const Exports& exports() const { return exports_; }
    void perform(const Case& one) const {
        static const Job job = instantJob();
        VKDATA record = recordFor(one, job);
        bench::perform(one, exports_, job, record);
    }
    void perform(const Case& one, size_t times) const {
        for (size_t i = 0; i < times; ++i) {
            perform(one);
        }
    }

  private:
    static std::map<std::string, void*> answersWith(const std::map<std::string, void*>& more) {
        std::map<std::string, void*> answers = instantAnswers();
        answers.insert(more.begin(), more.end());
        return answers;
    }

    test::LoadedModule module_;
    Exports exports_{};
};

std::map<std::string, int> countByName(const std::string& file, const Case& one, Logging logging) {
    SimulatedJob job(file, one, logging, true);
    job.perform();
    std::map<std::string, int> counts;
    for (const test::CallRecord& call : job.calls()) {
        ++counts[call.name];
    }
    return counts;
}

std::string jsonOf(const std::map<std::string, int>& counts) {
    std::string json;
    for (const auto& [name, count] : counts) {
        json += (json.empty() ? "\"" : ", \"") + name + "\": " + std::to_string(count);
    }
    return "{" + json + "}";
}

// What the library holds of the heap. The one text that has to grow with the calls is soon larger
// than any other block.
struct Held {
    static constexpr size_t largest = 4096;
    std::atomic<size_t> large = 0;
    std::atomic<size_t> others = 0;
    std::atomic<size_t>& of(void* block) { return _msize(block) > largest ? large : others; }
};
Held held;

void* countedMalloc(size_t size) {
    void* block = std::malloc(size);
    held.of(block) += _msize(block);
    return block;
}

void* countedCalloc(size_t count, size_t size) {
    void* block = std::calloc(count, size);
    held.of(block) += _msize(block);
    return block;
}

void countedFree(void* block) {
    if (block != nullptr) {
        held.of(block) -= _msize(block);
        std::free(block);
    }
}

void measureHeap() {
    setInstantMachine(Route::message, Logging::on);
    const InstantModule library(test::productDll(),
                                {{"malloc", reinterpret_cast<void*>(countedMalloc)},
                                 {"calloc", reinterpret_cast<void*>(countedCalloc)},
                                 {"free", reinterpret_cast<void*>(countedFree)}});
    size_t done = 0;
    for (const size_t events : {10U, 1000U, 100000U, 1000000U}) {
        library.perform(medianEvent(), events - done);
        done = events;
        Line("heap")
            .number("events", static_cast<double>(events))
            .number("large", static_cast<double>(held.large))
            .number("others", static_cast<double>(held.others))
            .print();
    }
}

// An old instance, with so many events behind it, against a young one, in turns.
void measureGrowth() {
    constexpr size_t perSample = 50;
    constexpr size_t pairs = 400;
    setInstantMachine(Route::message, Logging::on);
    for (const size_t events : {10U, 1000U, 100000U, 1000000U}) {
        const InstantModule old(test::productDll());
        old.perform(medianEvent(), events);
        const InstantModule young(test::productDll());
        young.perform(medianEvent(), 1000);
        const auto side = [&](const InstantModule& module) {
            return Side{{}, [&] { module.perform(medianEvent(), perSample); }};
        };
        Line line("growth");
        line.number("events", static_cast<double>(events)).number("perSample", perSample);
        line.number("memory", memoryInUse());
        line.comparison(compare(20, pairs, side(old), side(young))).print();
    }
}

void measureThreads() {
    setInstantMachine(Route::message, Logging::on);
    const InstantModule library(test::productDll());
    for (size_t count = 1; count <= mostThreads; ++count) {
        std::vector<Job> jobs(count, instantJob());
        printThreads("simulated", "one", library.exports(), jobs, 4000);
        for (size_t i = 0; i < count; ++i) {
            jobs[i].dral = reinterpret_cast<HANDLE>(0x1000 + i);
        }
        printThreads("simulated", "separate", library.exports(), jobs, 4000);
    }
}

}  // namespace

int countCalls() {
    for (const Case& one : cases()) {
        for (const Logging logging : allLogging) {
            Line("calls")
                .text("case", one.title())
                .text("logging", nameOf(logging))
                .raw("demanded", jsonOf(countByName(floorDll(), one, logging)))
                .raw("made", jsonOf(countByName(test::productDll(), one, logging)))
                .print();
        }
    }
    return 0;
}

int timeSimulated() {
    constexpr size_t warmUp = 20;
    constexpr size_t pairs = 300;
    test::System system;
    for (const Case& one : cases()) {
        for (const Logging logging : allLogging) {
            const size_t perSample = one.isGetter() ? 2000 : 20;
            setInstantMachine(one.route, logging);
            const InstantModule library(test::productDll());
            const InstantModule floor(floorDll());
            const Comparison result =
                compare(warmUp, pairs, {{}, [&] { library.perform(one, perSample); }},
                        {{}, [&] { floor.perform(one, perSample); }});
            Line("time")
                .text("where", "simulated")
                .text("case", one.title())
                .text("logging", nameOf(logging))
                .number("perSample", static_cast<double>(perSample))
                .comparison(result)
                .print();
        }
    }
    return 0;
}

int growSimulated() {
    test::System system;
    measureHeap();
    measureGrowth();
    measureThreads();
    return 0;
}

}  // namespace vok::bench
