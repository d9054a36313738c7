// A logger whose options a test sets.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "logging/basic_logger.h"
#include "support/critical_section.h"

namespace vok::test {

class OptionLogger : public BasicLogger {
  public:
    explicit OptionLogger(const char* logName = "Test.log", std::uint32_t width = 10)
        : BasicLogger(logName, width) {}

    void getOption(const char* name, std::uint32_t* value, std::uint32_t defaultValue) override {
        const CriticalSectionLock lock(&lock_);
        reads.emplace_back(name);
        if (unreadable.contains(name)) {
            return;
        }
        const auto found = options.find(name);
        *value = found == options.end() ? defaultValue : found->second;
    }

    void onLogFileMissing() override { ++missing; }
    std::string linePrefix(const LogCategory*, std::uint32_t, const char*) override {
        return prefix;
    }
    std::string lineSuffix(const LogCategory*, std::uint32_t, const char*) override {
        return suffix;
    }

    std::map<std::string, std::uint32_t> options;
    std::set<std::string> unreadable;  // left as the caller preset them
    std::vector<std::string> reads;
    int missing = 0;
    std::string prefix;
    std::string suffix;

  private:
    CriticalSection lock_;  // guards `reads`
};

}  // namespace vok::test
