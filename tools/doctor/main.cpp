// vok-doctor: why does nothing happen on this machine? (usage in command_line.cpp)

#include "command_line.h"
#include "common/command_line.h"
#include "common/output.h"
#include "doctor.h"

int main(int count, char** words) {
    int status = 0;
    const auto options = vok::doctor::parseCommandLine(count, words, status);
    if (!options) {
        return status;
    }
    const vok::doctor::Report report = vok::doctor::examine(*options);
    vok::tools::print(options->json ? report.json() : report.text());
    if (!vok::tools::allWasPrinted("vok-doctor")) {
        return vok::tools::exitMisused;
    }
    return report.count(vok::doctor::Level::Problem) == 0 ? 0 : 1;
}
