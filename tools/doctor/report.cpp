#include "report.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "common/system.h"

namespace vok::doctor {

namespace {

const char* levelName(Level level) {
    constexpr const char* texts[] = {"ok", "note", "warning", "problem"};
    return texts[static_cast<std::size_t>(level)];
}

// What a person sees of it.
const char* toText(Effect effect) {
    constexpr const char* texts[] = {
        "jobs that hang or never print", "jobs whose companions are not asked",
        "jobs that wait in the queue", "a log that is missing or misses records", ""};
    return texts[static_cast<std::size_t>(effect)];
}

std::string pageOf(const Advice& advice) {
    return std::string("docs/troubleshooting.md#") + advice.anchor;
}

// What was found and what to do about it.
std::string explained(const Finding& finding) {
    return fmt::format("{} -> {} ({})", finding.value, finding.advice->cure,
                       pageOf(*finding.advice));
}

nlohmann::ordered_json jsonOf(const Finding& finding) {
    nlohmann::ordered_json object = {{"level", levelName(finding.level)},
                                     {"step", tools::toUtf8(finding.step)},
                                     {"value", tools::toUtf8(finding.value)}};
    if (finding.advice != nullptr) {
        object["cure"] = finding.advice->cure;
        object["page"] = pageOf(*finding.advice);
    }
    return object;
}

}  // namespace

std::ptrdiff_t Report::count(Level level) const {
    return std::ranges::count(findings_, level, &Finding::level);
}

std::string Report::cause() const {
    for (const auto& [level, lead] :
         {std::pair(Level::Problem, "most likely cause of"),
          std::pair(Level::Warning, "no certain cause found; a possible one of")}) {
        const auto effect = [wanted = level](const Finding& finding) {
            return finding.level == wanted ? finding.advice->effect : Effect::None;
        };
        const auto worst = std::ranges::min_element(findings_, {}, effect);
        if (worst != findings_.end() && effect(*worst) != Effect::None) {
            return fmt::format("{} {}: {}: {}", lead, toText(effect(*worst)), worst->step,
                               explained(*worst));
        }
    }
    return "no cause found: nothing that was looked at stands in the way of a job";
}

std::string Report::text() const {
    std::string text;
    for (const Finding& finding : findings_) {
        text += fmt::format("{:<8} {:<27} {}\n", levelName(finding.level), finding.step,
                            finding.advice == nullptr ? finding.value : explained(finding));
    }
    return text + fmt::format("problems: {}, warnings: {}, notes: {}\n{}\n", count(Level::Problem),
                              count(Level::Warning), count(Level::Note), cause());
}

std::string Report::json() const {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings_) {
        list.push_back(jsonOf(finding));
    }
    const nlohmann::ordered_json object = {{"findings", list},
                                           {"problems", count(Level::Problem)},
                                           {"warnings", count(Level::Warning)},
                                           {"notes", count(Level::Note)},
                                           {"cause", tools::toUtf8(cause())}};
    return object.dump(2) + "\n";
}

}  // namespace vok::doctor
