#include "report.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "common/system_text.h"

namespace vok::doctor {

namespace {

const char* levelName(Level level) {
    constexpr const char* texts[] = {"ok", "note", "warning", "problem"};
    return texts[static_cast<std::size_t>(level)];
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

// What was found and what to do about it.
std::string explained(const Finding& finding) {
    return finding.value + " -> " + finding.advice->cure + " (" + pageOf(*finding.advice) + ")";
}

std::string line(const Finding& finding) {
    constexpr std::size_t levelWidth = 9;
    constexpr std::size_t stepWidth = 28;
    return padded(levelName(finding.level), levelWidth) + padded(finding.step, stepWidth) +
           (finding.advice == nullptr ? finding.value : explained(finding));
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

void Report::ok(const std::string& step, const std::string& value) {
    findings_.push_back({Level::Ok, step, value, nullptr});
}

void Report::note(const std::string& step, Trouble trouble, const std::string& value) {
    findings_.push_back({Level::Note, step, value, &adviceFor(trouble)});
}

void Report::warn(const std::string& step, Trouble trouble, const std::string& value) {
    findings_.push_back({Level::Warning, step, value, &adviceFor(trouble)});
}

void Report::problem(const std::string& step, Trouble trouble, const std::string& value) {
    findings_.push_back({Level::Problem, step, value, &adviceFor(trouble)});
}

void Report::complain(bool inTheWay, const std::string& step, Trouble trouble,
                      const std::string& value) {
    if (inTheWay) {
        problem(step, trouble, value);
    } else {
        warn(step, trouble, value);
    }
}

std::size_t Report::count(Level level) const {
    return static_cast<std::size_t>(
        std::count_if(findings_.begin(), findings_.end(),
                      [level](const Finding& finding) { return finding.level == level; }));
}

const Finding* Report::worst(Level level) const {
    const Finding* worst = nullptr;
    for (const Finding& finding : findings_) {
        if (finding.level == level && finding.advice->effect != Effect::None &&
            (worst == nullptr || finding.advice->effect < worst->advice->effect)) {
            worst = &finding;
        }
    }
    return worst;
}

std::string Report::cause() const {
    if (const Finding* found = worst(Level::Problem)) {
        return std::string("most likely cause of ") + toText(found->advice->effect) + ": " +
               found->step + ": " + explained(*found);
    }
    if (const Finding* found = worst(Level::Warning)) {
        return std::string("no certain cause found; a possible one of ") +
               toText(found->advice->effect) + ": " + found->step + ": " + explained(*found);
    }
    return "no cause found: nothing that was looked at stands in the way of a job";
}

std::string Report::text() const {
    std::string text;
    for (const Finding& finding : findings_) {
        text += line(finding) + "\n";
    }
    return text + "problems: " + std::to_string(count(Level::Problem)) +
           ", warnings: " + std::to_string(count(Level::Warning)) +
           ", notes: " + std::to_string(count(Level::Note)) + "\n" + cause() + "\n";
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
