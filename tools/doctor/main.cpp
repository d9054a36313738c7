// vok-doctor: why does nothing happen on this machine? (usage in command_line.cpp)

#include <string>

#include "command_line.h"
#include "common/output.h"
#include "doctor.h"

namespace {

constexpr int exitMisused = 2;

bool print(const std::string& text) {
    vok::tools::print(text);
    if (!vok::tools::isAllPrinted()) {
        vok::tools::complain("vok-doctor: can't write to the standard output\n");
        return false;
    }
    return true;
}

}  // namespace

int main(int count, char** words) {
    std::string error;
    const auto options = vok::doctor::parseCommandLine(count, words, error);
    if (!options) {
        vok::tools::complain("vok-doctor: " + error + "\n\n" + vok::doctor::usage);
        return exitMisused;
    }
    if (options->help) {
        return print(vok::doctor::usage) ? 0 : exitMisused;
    }
    const vok::doctor::Report report = vok::doctor::examine(*options);
    if (!print(options->json ? report.json() : report.text())) {
        return exitMisused;
    }
    return report.count(vok::doctor::Level::Problem) == 0 ? 0 : 1;
}
