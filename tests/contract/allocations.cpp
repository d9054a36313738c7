#include "allocations.h"

#include <atomic>
#include <bit>
#include <cstdlib>

#include "common/import_table.h"

namespace vok::test {
namespace {

std::atomic<LONG> remaining = 0;
std::atomic<LONG> failed = 0;
std::atomic<bool> lasting = false;

bool refuses() {
    if (remaining == 0 || --remaining > 0)
        return false;
    remaining = lasting ? 1 : 0;
    ++failed;
    return true;
}

void* allocate(size_t size) {
    return refuses() ? nullptr : std::malloc(size);
}

void* allocateZeroed(size_t count, size_t size) {
    return refuses() ? nullptr : std::calloc(count, size);
}

}  // namespace

bool failAllocation(HMODULE library, LONG k, bool forEver) {
    lasting = forEver;
    failed = 0;
    remaining = k;
    return sample::replaceImport(library, "malloc", std::bit_cast<FARPROC>(&allocate)) &&
           sample::replaceImport(library, "calloc", std::bit_cast<FARPROC>(&allocateZeroed));
}

LONG failedAllocations() {
    return failed;
}

}  // namespace vok::test
