// What the library is told of printers, and the companions that it starts. The library under it is
// the real one; its imports are replaced, so that no printer is needed and nothing is written.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace vok::check {

struct Exchange {
    bool happened = false;
    LRESULT word = 0;  // what the window procedure returned
    DWORD bytes = 0;   // that were read from the pipe
};

// Makes the library start `companion` wherever it starts a program of that file name, and believe
// that every printer exists and bears the prefix. Returns the name of the import that could not be
// replaced, or an empty text.
std::string standIn(HMODULE library, const std::string& companion, const std::string& prefix);

// Processes that were started for the library since the last call of endCompanions.
const std::vector<HANDLE>& startedCompanions();

// Starts the companion with what follows the file name on a command line.
HANDLE startCompanion(const std::string& arguments);

// Ends all of them and waits until they are gone.
void endCompanions();

// What has gone between library and companion since it was last cleared.
Exchange& exchange();

}  // namespace vok::check
