// vok-companion-check: does a companion keep the contract? (usage in command_line.cpp)

#include <windows.h>

#include <fstream>
#include <ios>
#include <string>
#include <vector>

#include "checks.h"
#include "command_line.h"
#include "common/command_line.h"
#include "common/output.h"
#include "common/system_text.h"

namespace vok::check {

namespace {

constexpr int exitBroken = 1;
using tools::exitMisused;

constexpr char program[] = "vok-companion-check";

int fail(const std::string& text) {
    tools::complain(std::string(program) + ": " + text + "\n");
    return exitMisused;
}

// The file name is the first check: without a role there are no others.
int reportFileName(const Options& options, std::vector<Result>& results) {
    results.push_back(
        {"file-name", Verdict::Fail,
         tools::fileOf(options.companion) + " is not four characters and DRAL.EXE or NEMB.EXE", 0});
    return exitBroken;
}

int run(const Options& options, std::vector<Result>& results) {
    if (GetFileAttributesA(options.companion.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        return fail(options.companion + ": " + tools::errorText(error));
    }
    const auto identity = sample::parseFileName(options.companion);
    if (!identity) {
        const int status = reportFileName(options, results);
        if (!options.json) {
            tools::print(resultLine(results.back()));
        }
        return status;
    }
    Host host(options, *identity);
    const std::string wrong = host.prepare();
    if (!wrong.empty()) {
        return fail(wrong);
    }
    results = makeChecks(host, options.stop, options.json);
    return noneFailed(results) ? 0 : exitBroken;
}

bool writeJunit(const Options& options, const std::vector<Result>& results) {
    std::ofstream file(options.junit, std::ios::binary);
    file << toJunit(tools::fileOf(options.companion), results);
    file.close();
    return file.good();
}

}  // namespace

}  // namespace vok::check

int main(int count, char** words) {
    using namespace vok::check;
    int status = 0;
    const auto options = parseCommandLine(count, words, status);
    if (!options) {
        return status;
    }
    std::vector<Result> results;
    status = run(*options, results);
    if (status == exitMisused) {
        return status;
    }
    if (options->json) {
        vok::tools::print(toJson(options->companion, results));
    }
    if (!vok::tools::allWasPrinted(program)) {
        return exitMisused;
    }
    if (!options->junit.empty() && !writeJunit(*options, results)) {
        return fail("can't write " + options->junit);
    }
    return status;
}
