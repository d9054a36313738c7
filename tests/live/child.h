// Programs that a test runs, and the files of the product.
#pragma once

#include <functional>
#include <string>

namespace vok::test {

struct Outcome {
    unsigned long status = 0;
    std::string output;  // standard output and error
};

// Runs a command line and waits for its end. A program that can't be started has the status
// 0xFFFFFFFF and the reason as its output. Its process is shown to `beforeItRuns` when it is there
// and has not begun.
Outcome runProgram(const std::string& commandLine,
                   const std::function<void(void* process)>& beforeItRuns = {});

// The same for a program whose standard output takes nothing; `output` is its standard error.
Outcome runWithoutOutput(const std::string& commandLine);

// The folder of the product: VOK_TEST_PRODUCT of the environment, else where it was built.
std::string productFolder();

// The quoted path of a program of the product.
std::string product(const std::string& fileName);

// The bytes of a file; empty when it can't be read.
std::string fileText(const std::string& path);

}  // namespace vok::test
