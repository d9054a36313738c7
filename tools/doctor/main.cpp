// vok-doctor: why does nothing happen on this machine? (usage in command_line.cpp)

#include <cstdio>

#include "command_line.h"
#include "doctor.h"

int main(int count, char** words) {
    constexpr int exitMisused = 2;
    std::string error;
    const auto options = vok::doctor::parseCommandLine(count, words, error);
    if (!options) {
        std::fprintf(stderr, "vok-doctor: %s\n\n%s", error.c_str(), vok::doctor::usage);
        return exitMisused;
    }
    if (options->help) {
        std::fputs(vok::doctor::usage, stdout);
        return 0;
    }
    const vok::doctor::Report report = vok::doctor::examine(*options);
    const std::string output = options->json ? report.json() : report.text();
    std::fwrite(output.data(), 1, output.size(), stdout);
    return report.count(vok::doctor::Level::Problem) == 0 ? 0 : 1;
}
