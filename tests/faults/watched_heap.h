// The C runtime's heap as the library sees it: counted, failing on demand, every block guarded at
// both ends, freed memory poisoned and kept back, so that using it shows.
#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "sim/faults.h"

namespace vok::test::heap {

// To load the library with. There is one heap for all libraries loaded so.
std::map<std::string, void*> overrides();

// The k-th allocation from now (from 1) gives no memory, and with forEver every later one.
void fail(size_t k, Lasting lasting);
// Ends that, and the counting.
void failNothing();
size_t failed();     // allocations refused since fail
size_t attempted();  // allocations asked for since fail or failNothing

// Sizes of the blocks that are allocated and not freed.
std::vector<size_t> liveSizes();
size_t liveBytes();
// Frees what a stopped library left, and what is kept back.
void clear();

// Blocks overrun, freed twice, never allocated, or written to after they were freed, since clear.
std::vector<std::string> damage();

}  // namespace vok::test::heap
