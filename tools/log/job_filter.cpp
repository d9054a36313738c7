#include <algorithm>
#include <cctype>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "outputs.h"

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

bool isOfKind(const Job& job, const std::string& kind) {
    if (kind == "dral" || kind == "nemb") {
        const Side side = kind == "dral" ? Side::Dral : Side::Nemb;
        return std::ranges::find(job.findings, side, &Finding::side) != job.findings.end();
    }
    return kind == toText(job.result()) || kind == toText(job.weight()) ||
           std::ranges::any_of(job.findings, [&](const Finding& finding) {
               return kind == textOf(finding.id).name;
           });
}

bool isWanted(const Job& job, const Options& wanted) {
    const bool timed = job.start != noTime;
    if ((wanted.problemsOnly && job.weight() == Weight::Note) ||
        lower(job.printer).find(lower(wanted.printer)) == std::string::npos ||
        (wanted.since != noTime && (!timed || job.end < wanted.since)) ||
        (wanted.until != noTime && (!timed || job.start > wanted.until))) {
        return false;
    }
    return wanted.only.empty() || std::ranges::any_of(wanted.only, [&](const std::string& kind) {
               return isOfKind(job, kind);
           });
}

class JobFilter final : public Sink {
  public:
    JobFilter(Sink& account, const Options& options) : account_(account), options_(options) {}

    void job(const Job& job) override {
        if (!isWanted(job, options_)) {
            return;
        }
        if (options_.slowest == 0) {
            return account_.job(job);
        }
        slowest_.insert(std::ranges::upper_bound(slowest_, lengthOf(job), std::greater(), lengthOf),
                        job);
        if (slowest_.size() > options_.slowest) {
            slowest_.pop_back();
        }
    }

    void finish(const Summary& summary) override {
        for (const Job& slow : slowest_) {
            account_.job(slow);
        }
        account_.finish(summary);
    }

  private:
    Sink& account_;
    const Options& options_;
    std::vector<Job> slowest_;
};

}  // namespace

bool isKind(const std::string& word) {
    constexpr std::string_view others[] = {"problem", "warning", "dral", "nemb"};
    const auto among = [&](const auto& known) {
        return std::ranges::find(known, std::string_view(word)) != std::end(known);
    };
    return among(words<JobEnd>) || among(others) ||
           std::ranges::any_of(findings(), [&](const auto& text) { return word == text.name; });
}

std::unique_ptr<Sink> makeFilter(Sink& account, const Options& options) {
    return std::make_unique<JobFilter>(account, options);
}

}  // namespace vok::log
