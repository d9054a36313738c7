#include "job_filter.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "text.h"

namespace vok::log {

namespace {

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// How long somebody waited for the job.
std::int64_t lengthOf(const Job& job) {
    return job.duration().value_or(0) + job.silent.value_or(0);
}

bool isSlower(const Job& left, const Job& right) {
    return lengthOf(left) > lengthOf(right);
}

bool concerns(const Job& job, Side side) {
    return std::any_of(job.findings.begin(), job.findings.end(),
                       [side](const Finding& finding) { return finding.side == side; });
}

bool isOfKind(const Job& job, const std::string& kind) {
    if (kind == "dral" || kind == "nemb") {
        return concerns(job, kind == "dral" ? Side::Dral : Side::Nemb);
    }
    return kind == toText(job.result()) || kind == toText(job.weight()) ||
           std::any_of(job.findings.begin(), job.findings.end(),
                       [&](const Finding& finding) { return kind == textOf(finding.id).name; });
}

}  // namespace

bool isKind(const std::string& word) {
    constexpr std::string_view others[] = {"problem", "warning", "dral", "nemb"};
    for (std::size_t end = 0; end < Summary::ends; ++end) {
        if (word == toText(static_cast<JobEnd>(end))) {
            return true;
        }
    }
    const auto known = findings();
    return std::find(std::begin(others), std::end(others), word) != std::end(others) ||
           std::any_of(known.begin(), known.end(),
                       [&](const FindingText& text) { return word == text.name; });
}

bool isWanted(const Job& job, const Wanted& wanted) {
    const bool timed = job.start != noTime;
    if (lower(job.printer).find(lower(wanted.printer)) == std::string::npos ||
        (wanted.since != noTime && (!timed || job.end < wanted.since)) ||
        (wanted.until != noTime && (!timed || job.start > wanted.until))) {
        return false;
    }
    return wanted.only.empty() ||
           std::any_of(wanted.only.begin(), wanted.only.end(),
                       [&](const std::string& kind) { return isOfKind(job, kind); });
}

void JobFilter::job(const Job& job) {
    if (!isWanted(job, wanted_)) {
        return;
    }
    if (wanted_.slowest == 0) {
        return account_.job(job);
    }
    slowest_.insert(std::upper_bound(slowest_.begin(), slowest_.end(), job, isSlower), job);
    if (slowest_.size() > wanted_.slowest) {
        slowest_.pop_back();
    }
}

void JobFilter::finish(const Summary& summary) {
    for (const Job& slow : slowest_) {
        account_.job(slow);
    }
    account_.finish(summary);
}

}  // namespace vok::log
