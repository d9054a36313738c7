// What the checks found.
#ifndef VOK_TOOLS_COMPANION_CHECK_RESULTS_H
#define VOK_TOOLS_COMPANION_CHECK_RESULTS_H

#include <string>
#include <vector>

namespace vok::check {

enum class Verdict { Pass, Fail, Skip };

struct Result {
    std::string check;  // "pipe-opens"; stays as it is from version to version
    Verdict verdict;
    std::string text;  // what was seen, what was wrong, or why it was not looked for
    unsigned long milliseconds;
};

bool noneFailed(const std::vector<Result>& results);

std::string resultLine(const Result& result);
std::string toJson(const std::string& companion, const std::vector<Result>& results);
std::string toJunit(const std::string& companion, const std::vector<Result>& results);

}  // namespace vok::check

#endif
