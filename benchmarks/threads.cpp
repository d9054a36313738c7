#include "threads.h"

#include <atomic>
#include <thread>
#include <vector>

#include "measure.h"

namespace vok::bench {

void printThreads(const char* where, const char* printers, const Exports& exports,
                  const std::vector<Job>& jobs, size_t events) {
    std::atomic<bool> go = false;
    std::vector<std::thread> threads;
    for (const Job& job : jobs) {
        threads.emplace_back([&] {
            while (!go) {
                std::this_thread::yield();
            }
            for (size_t i = 0; i < events; ++i) {
                VKDATA record = recordFor(medianEvent(), job);
                perform(medianEvent(), exports, job, record);
            }
        });
    }
    const double begin = microseconds();
    go = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    const double time = microseconds() - begin;
    Line("threads")
        .text("where", where)
        .text("printers", printers)
        .number("threads", static_cast<double>(jobs.size()))
        .number("perEvent", time / static_cast<double>(events * jobs.size()))
        .print();
}

}  // namespace vok::bench
