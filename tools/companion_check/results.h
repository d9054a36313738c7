// What the checks found.
#ifndef VOK_TOOLS_COMPANION_CHECK_RESULTS_H
#define VOK_TOOLS_COMPANION_CHECK_RESULTS_H

#include <string>
#include <vector>

namespace vok::check {

struct Result {
    std::string check;  // "pipe-opens"; stays as it is from version to version
    bool passed;
    std::string text;  // what was seen, or what was wrong
    unsigned long milliseconds;
};

bool allPassed(const std::vector<Result>& results);

std::string resultLine(const Result& result);
std::string toJson(const std::string& companion, const std::vector<Result>& results);
std::string toJunit(const std::string& companion, const std::vector<Result>& results);

}  // namespace vok::check

#endif
