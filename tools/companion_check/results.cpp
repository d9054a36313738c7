#include "results.h"

#include <algorithm>

#include "common/json.h"

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

auto failures(const std::vector<Result>& results) {
    return std::count_if(results.begin(), results.end(),
                         [](const Result& result) { return !result.passed; });
}

}  // namespace

bool allPassed(const std::vector<Result>& results) {
    return failures(results) == 0;
}

std::string resultLine(const Result& result) {
    constexpr std::size_t width = 22;
    std::string name = result.check;
    name.resize(std::max(name.size() + 1, width), ' ');
    return (result.passed ? "pass  " : "FAIL  ") + name + result.text + "\n";
}

std::string toJson(const std::string& companion, const std::vector<Result>& results) {
    std::vector<std::string> items;
    for (const Result& result : results) {
        items.push_back(tools::JsonObject()
                            .text("check", result.check)
                            .text("result", result.passed ? "pass" : "fail")
                            .text("text", result.text)
                            .number("milliseconds", result.milliseconds)
                            .str());
    }
    return tools::JsonObject()
               .text("companion", companion)
               .raw("checks", tools::jsonList(items))
               .number("failures", static_cast<unsigned long>(failures(results)))
               .str() +
           "\n";
}

std::string toJunit(const std::string& companion, const std::vector<Result>& results) {
    const std::string name = xmlText(companion);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" + name +
                      "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                      std::to_string(failures(results)) + "\">\n";
    for (const Result& result : results) {
        xml += "  <testcase classname=\"" + name + "\" name=\"" + xmlText(result.check) +
               "\" time=\"" + seconds(result.milliseconds) + "\"";
        xml += result.passed ? "/>\n"
                             : "><failure message=\"" + xmlText(result.text) + "\"/></testcase>\n";
    }
    return xml + "</testsuite>\n";
}

}  // namespace vok::check
