// Many threads at once, each with a job of its own.
#pragma once
#include <vector>

#include "cases.h"

namespace vok::bench {

constexpr size_t mostThreads = 8;

// Sends so many median events on one thread for each job and prints the time that one event took.
void printThreads(const char* where, const char* printers, const Exports& exports,
                  const std::vector<Job>& jobs, size_t events);

}  // namespace vok::bench
