#include "results.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "common/system_text.h"

namespace vok::check {

namespace {

std::string xmlText(const std::string& text) {
    std::string escaped;
    for (const char character : tools::toUtf8(text)) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
        }
    }
    return escaped;
}

std::string seconds(unsigned long milliseconds) {
    const std::string rest = std::to_string(1000 + milliseconds % 1000);
    return std::to_string(milliseconds / 1000) + "." + rest.substr(1);
}

unsigned long count(const std::vector<Result>& results, Verdict verdict) {
    return static_cast<unsigned long>(
        std::count_if(results.begin(), results.end(),
                      [verdict](const Result& result) { return result.verdict == verdict; }));
}

// How the verdicts are spelled in a line and in JSON.
struct Words {
    const char* line;
    const char* json;
};

Words wordsFor(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return {"pass  ", "pass"};
        case Verdict::Skip:
            return {"skip  ", "skip"};
        default:
            return {"FAIL  ", "fail"};
    }
}

std::string junitOutcome(const Result& result) {
    if (result.verdict == Verdict::Pass) {
        return "/>\n";
    }
    const char* element = result.verdict == Verdict::Skip ? "skipped" : "failure";
    return std::string("><") + element + " message=\"" + xmlText(result.text) + "\"/></testcase>\n";
}

}  // namespace

bool noneFailed(const std::vector<Result>& results) {
    return count(results, Verdict::Fail) == 0;
}

std::string resultLine(const Result& result) {
    constexpr std::size_t width = 22;
    std::string name = result.check;
    name.resize(std::max(name.size() + 1, width), ' ');
    return wordsFor(result.verdict).line + name + result.text + "\n";
}

std::string toJson(const std::string& companion, const std::vector<Result>& results) {
    nlohmann::ordered_json checks = nlohmann::ordered_json::array();
    for (const Result& result : results) {
        checks.push_back({{"check", result.check},
                          {"result", wordsFor(result.verdict).json},
                          {"text", tools::toUtf8(result.text)},
                          {"milliseconds", result.milliseconds}});
    }
    const nlohmann::ordered_json object = {{"companion", tools::toUtf8(companion)},
                                           {"checks", checks},
                                           {"failures", count(results, Verdict::Fail)},
                                           {"skipped", count(results, Verdict::Skip)}};
    return object.dump(2) + "\n";
}

std::string toJunit(const std::string& companion, const std::vector<Result>& results) {
    const std::string name = xmlText(companion);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" + name +
                      "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                      std::to_string(count(results, Verdict::Fail)) + "\" skipped=\"" +
                      std::to_string(count(results, Verdict::Skip)) + "\">\n";
    for (const Result& result : results) {
        xml += "  <testcase classname=\"" + name + "\" name=\"" + xmlText(result.check) +
               "\" time=\"" + seconds(result.milliseconds) + "\"" + junitOutcome(result);
    }
    return xml + "</testsuite>\n";
}

}  // namespace vok::check
