// vok-companion-check: does a companion keep the contract? (usage in command_line.cpp)

#include <windows.h>

#include <cstdio>
#include <fstream>

#include "checks.h"
#include "command_line.h"
#include "common/system_text.h"

namespace vok::check {

namespace {

constexpr int exitBroken = 1;
constexpr int exitMisused = 2;

int fail(const std::string& text) {
    std::fprintf(stderr, "vok-companion-check: %s\n", text.c_str());
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
            std::fputs(resultLine(results.back()).c_str(), stdout);
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
    std::string error;
    const auto options = parseCommandLine(count, words, error);
    if (!options) {
        std::fprintf(stderr, "vok-companion-check: %s\n\n%s", error.c_str(), usage);
        return exitMisused;
    }
    if (options->help) {
        std::fputs(usage, stdout);
        return 0;
    }
    std::vector<Result> results;
    const int status = run(*options, results);
    if (status == exitMisused) {
        return status;
    }
    if (options->json) {
        std::fputs(toJson(options->companion, results).c_str(), stdout);
    }
    if (!options->junit.empty() && !writeJunit(*options, results)) {
        return fail("can't write " + options->junit);
    }
    return status;
}
