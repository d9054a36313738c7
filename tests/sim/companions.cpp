#include "companions.h"

#include <cctype>
#include <string>
#include <utility>
#include <vector>

namespace vok::test {

std::string Companions::nembMutex() const {
    std::string name = nembTitle();
    for (char& c : name) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return "Global\\" + name;
}

std::string Companions::dralLine(const System& system) const {
    return system.driverPath() + prefix + "DRAL.EXE SPLPP /F=" + printer;
}

std::string Companions::nembLine(const System& system) const {
    const bool byPipe = system.os.isNtFrom(5, 1) && system.sessions.own != system.sessions.console;
    const std::string file = byPipe ? "NEMB.EXE" : "nemb.exe";
    return system.driverPath() + prefix + file + " SPLPP /F=" + printer + " /J=1";
}

Window& Companions::runDral(System& system, std::vector<LRESULT> replies) const {
    if (system.os.is9x()) {
        return system.desktop.add(dralHidden(), dral9xTitle(), std::move(replies));
    }
    return system.desktop.add("DRAL main window", dralTitle(), std::move(replies));
}

Window& Companions::runNemb(System& system, std::vector<LRESULT> replies) const {
    return system.desktop.add(nembClass(), nembTitle(), std::move(replies));
}

Window& Companions::showDralHidden(System& system, std::vector<LRESULT> replies) const {
    return system.desktop.add(dralHidden(), dralHidden(), std::move(replies));
}

void Companions::appearWhenStarted(System& system) const {
    system.processes.onStart = [companions = *this, &system](const Start& start) {
        std::string program = start.application.empty() ? start.commandLine : start.application;
        for (char& c : program) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        if (program.find("DRAL.EXE") != std::string::npos) {
            companions.runDral(system);
            companions.showDralHidden(system);
        } else if (program.find("NEMB.EXE") != std::string::npos) {
            companions.runNemb(system);
        }
    };
}

}  // namespace vok::test
