/**
 * @file live_machine.h
 * The parts of one model on the machine: files, printers, registry, processes and log.
 */
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace vok::test {

/// Installs the model of this program as it ships and removes it again. What an earlier test left,
/// because it crashed, goes first.
class LiveMachine {
  public:
    LiveMachine();
    ~LiveMachine();
    LiveMachine(const LiveMachine&) = delete;
    LiveMachine& operator=(const LiveMachine&) = delete;

    /// Adds a printer, a copy of the one that the tests' system has, with the model's prefix in its
    /// data. The result is its name, which begins with the prefix.
    std::string addPrinter(const std::string& name);

    /// A folder of this model alone.
    [[nodiscard]] std::string folder() const { return folder_; }

    /// Where the companions and the configuration library are.
    [[nodiscard]] std::string programs() const { return programs_; }

    /// A second copy of the library, which another part of the process does not see.
    std::string copyLibrary(const std::string& folderName);

    /// Puts another program in the place of a companion ("DRAL", "NEMB"), or another configuration
    /// library ("cfg"). The file comes from the folder of the tests.
    void replace(const std::string& what, const std::string& fixture);

    [[nodiscard]] std::string logPath() const { return "C:\\" + logName_; }
    [[nodiscard]] std::string tracePath() const { return folder_ + "\\trace.txt"; }

    /// The ids of the companions of that name that run.
    [[nodiscard]] std::vector<DWORD> companions(const std::string& name) const;

    /// Ends all companions of this model and waits until they are gone.
    void endCompanions();

  private:
    void removeAll();

    std::string logName_;
    std::string folder_;
    std::string programs_;
    std::vector<std::string> printers_;
};

/// Ends a process by its id and waits until it is gone.
void endProcess(DWORD id);

/// The lines of a text file, without their line ends; none when there is no such file.
std::vector<std::string> readLines(const std::string& path);

}  // namespace vok::test
