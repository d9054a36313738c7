// The companions of one printer: what they are called, and what appears when they run.
#pragma once
#include <string>
#include <vector>

#include "system.h"

namespace vok::test {

// By which name is known what; nothing of it exists until a function below makes it.
struct Companions {
    std::string printer = "Office";
    std::string suffix = "Office";  // of the job record
    std::string prefix = "DEMO";

    std::string dralTitle() const { return prefix + "DRAL - " + printer; }
    std::string dral9xTitle() const { return "DRAL - " + printer; }
    std::string dralHidden() const { return "DRAL Hidden Window-" + suffix; }
    std::string nembClass() const { return prefix + "NEMB - "; }
    std::string nembTitle() const { return nembClass() + printer; }
    std::string nembMutex() const;
    std::string dralPipe() const { return R"(\\.\pipe\DRAL)" + printer; }
    std::string nembPipe() const { return R"(\\.\pipe\NEMB)" + printer; }
    std::string dralLine(const System& system) const;  // NT command line
    std::string nembLine(const System& system) const;

    // Windows of running companions, as they are found before a job on this system.
    Window& runDral(System& system, std::vector<LRESULT> replies = {1}) const;
    Window& runNemb(System& system, std::vector<LRESULT> replies = {1}) const;
    // DRAL's hidden window, by which it is found right after its start and by later events.
    Window& showDralHidden(System& system, std::vector<LRESULT> replies = {1}) const;
    // From now on a started companion has its windows at once.
    void appearWhenStarted(System& system) const;
};

}  // namespace vok::test
