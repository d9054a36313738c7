#include "report.h"

#include <algorithm>
#include <string>
#include <vector>

#include "common/json.h"

namespace vok::doctor {

namespace {

const char* levelName(Level level) {
    switch (level) {
        case Level::Ok:
            return "ok";
        case Level::Warning:
            return "warning";
        case Level::Problem:
            return "problem";
    }
    return "";
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

std::string line(const Finding& finding) {
    constexpr std::size_t levelWidth = 9;
    constexpr std::size_t stepWidth = 28;
    std::string text = padded(levelName(finding.level), levelWidth) +
                       padded(finding.step, stepWidth) + finding.value;
    if (finding.advice != nullptr) {
        text += std::string(" -> ") + finding.advice->cure + " (" + pageOf(*finding.advice) + ")";
    }
    return text;
}

std::string jsonOf(const Finding& finding) {
    tools::JsonObject object;
    object.text("level", levelName(finding.level))
        .text("step", finding.step)
        .text("value", finding.value);
    if (finding.advice != nullptr) {
        object.text("cure", finding.advice->cure).text("page", pageOf(*finding.advice));
    }
    return object.str();
}

}  // namespace

void Report::ok(const std::string& step, const std::string& value) {
    findings_.push_back({Level::Ok, step, value, nullptr});
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

std::string Report::text() const {
    std::string text;
    for (const Finding& finding : findings_) {
        text += line(finding) + "\n";
    }
    return text + "problems: " + std::to_string(count(Level::Problem)) +
           ", warnings: " + std::to_string(count(Level::Warning)) + "\n";
}

std::string Report::json() const {
    std::vector<std::string> items;
    for (const Finding& finding : findings_) {
        items.push_back(jsonOf(finding));
    }
    tools::JsonObject object;
    object.raw("findings", tools::jsonList(items))
        .number("problems", static_cast<unsigned long>(count(Level::Problem)))
        .number("warnings", static_cast<unsigned long>(count(Level::Warning)));
    return object.str() + "\n";
}

}  // namespace vok::doctor
