#include "faults/job.h"

#include <cstring>
#include <string>

namespace vok::test {
namespace {

VKDATA freshRecord() {
    VKDATA record{};
    std::strcpy(record.dralTitleSuffix, Job::titleSuffix);
    return record;
}

// A block that begins with the printer's name; the rest is of no meaning to the library.
std::string blockFor(const std::string& printer, size_t size) {
    std::string block = printer + '\0';
    for (size_t i = block.size(); i < size; ++i) {
        block += static_cast<char>('a' + i % 26);
    }
    block.resize(size);
    return block;
}

}  // namespace

Job::Job(const std::string& printer, const std::string& port)
    : record_(&static_cast<const VKDATA&>(freshRecord()), sizeof(VKDATA),
              GuardedBytes::Use::readWrite),
      printer_(printer.c_str(), printer.size() + 1, GuardedBytes::Use::readOnly),
      port_(port.c_str(), port.size() + 1, GuardedBytes::Use::readOnly),
      dralBlock_(blockFor(printer, VOK_DRAL_BLOCK_SIZE).data(), VOK_DRAL_BLOCK_SIZE,
                 GuardedBytes::Use::readOnly),
      nembBlock_(blockFor(printer, VOK_NEMB_BLOCK_SIZE).data(), VOK_NEMB_BLOCK_SIZE,
                 GuardedBytes::Use::readOnly) {}

}  // namespace vok::test
