// What one print job hands to the library, in guarded memory.
#pragma once
#include <vok/vok.h>

#include <string>

#include "sim/guarded_bytes.h"

namespace vok::test {

class Job {
  public:
    explicit Job(const std::string& printer = "Office", const std::string& port = "LPT1:");

    VKDATA& record() { return *static_cast<VKDATA*>(record_.data()); }
    const VKDATA& record() const { return *static_cast<const VKDATA*>(record_.data()); }
    const char* printer() const { return static_cast<const char*>(printer_.data()); }
    const char* port() const { return static_cast<const char*>(port_.data()); }
    const void* dralBlock() const { return dralBlock_.data(); }
    const void* nembBlock() const { return nembBlock_.data(); }

    bool isIntact() const { return record_.isIntact(); }

    static constexpr const char* titleSuffix = "Suffix";

  private:
    GuardedBytes record_;
    GuardedBytes printer_;
    GuardedBytes port_;
    GuardedBytes dralBlock_;
    GuardedBytes nembBlock_;
};

}  // namespace vok::test
