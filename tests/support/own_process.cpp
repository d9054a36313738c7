#include "own_process.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace vok::test {
namespace {

struct Mark {
    std::string_view begin;
    const char* why;
};

std::vector<Mark>& marks() {
    static std::vector<Mark> all;
    return all;
}

}  // namespace

OwnProcess::OwnProcess(const char* begin, const char* why) {
    marks().push_back({begin, why});
}

std::vector<std::string> testsWithOwnProcess() {
    std::vector<std::string> found;
    const auto& program = *::testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        const auto& suite = *program.GetTestSuite(i);
        for (int k = 0; k < suite.total_test_count(); ++k) {
            const std::string name = std::string(suite.name()) + "." + suite.GetTestInfo(k)->name();
            for (const Mark& mark : marks()) {
                if (name.starts_with(mark.begin)) {
                    found.push_back(name + ": " + mark.why);
                    break;
                }
            }
        }
    }
    return found;
}

void leaveOutTestsWithOwnProcess() {
    std::string filter = GTEST_FLAG_GET(filter);
    const char* separator = filter.find('-') == std::string::npos ? "-" : ":";
    for (const std::string& test : testsWithOwnProcess()) {
        filter += separator + test.substr(0, test.find(':'));
        separator = ":";
    }
    GTEST_FLAG_SET(filter, filter);
}

}  // namespace vok::test
