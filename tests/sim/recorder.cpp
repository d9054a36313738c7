#include "recorder.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "real.h"

namespace vok::test {
namespace {

constexpr std::string_view quiet[] = {
    "GetTickCount",     "GetCurrentThreadId", "GetCurrentProcessId", "GetCurrentProcess",
    "GetCurrentThread", "GetLastError",       "SetLastError"};

}  // namespace

bool Recorder::records(std::string_view name) const {
    if (!on) {
        return false;
    }
    return std::find(std::begin(quiet), std::end(quiet), name) == std::end(quiet) ||
           also_.contains(name);
}

std::vector<std::string> Recorder::lines() const {
    std::vector<std::string> result;
    for (const CallRecord& record : records_) {
        result.push_back(record.line());
    }
    return result;
}

std::vector<std::string> Recorder::names() const {
    std::vector<std::string> result;
    for (const CallRecord& record : records_) {
        result.push_back(record.name);
    }
    return result;
}

std::vector<std::string> Recorder::linesOf(std::string_view name) const {
    std::vector<std::string> result;
    for (const CallRecord& record : records_) {
        if (record.name == name) {
            result.push_back(record.line());
        }
    }
    return result;
}

size_t Recorder::count(std::string_view name) const {
    const auto it = counts_.find(name);
    return it == counts_.end() ? 0 : it->second;
}

void Recorder::clear() {
    generation_ += records_.size();
    records_.clear();
    counts_.clear();
}

size_t Recorder::begin(std::string_view name, std::string arguments) {
    records_.push_back(
        {std::string(name), std::move(arguments), "(not back)", real.getCurrentThreadId()});
    return generation_ + records_.size() - 1;
}

void Recorder::end(size_t index, std::string result) {
    if (index >= generation_ && index - generation_ < records_.size()) {
        records_[index - generation_].result = std::move(result);
    }
}

}  // namespace vok::test
