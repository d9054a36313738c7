// Tests that need a process of their own, where the others of their program share one.
#pragma once

#include <string>
#include <vector>

namespace vok::test {

// Beside the tests that it is about, in an unnamed namespace:
//     const OwnProcess logSetUp{"LogSetUp.", "a logger that …"};
// All tests whose full names begin so; the reason is shown to whoever lists them.
struct OwnProcess {
    OwnProcess(const char* begin, const char* why);
};

// "NAME: REASON" of each of the program's tests that needs one; a colon ends the name.
std::vector<std::string> testsWithOwnProcess();

// Leaves them out of the run that is about to begin.
void leaveOutTestsWithOwnProcess();

}  // namespace vok::test
