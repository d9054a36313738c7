// A machine with the demo installed, on which faults are planted, and the doctor who looks at it.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>
#include <utility>

#include "live/child.h"

namespace vok::test {

inline constexpr char driverFolder[] = R"(C:\windows\system32\spool\drivers\x64\3\)";
inline constexpr char processorFolder[] = R"(C:\windows\system32\spool\prtprocs\x64\)";
inline constexpr char systemFolder[] = R"(C:\windows\system32\)";
inline constexpr char printerName[] = "Demo Printer";
inline constexpr char optionsKey[] = R"(SOFTWARE\DEMO\Printer\XFiles\Logger)";

// Undoes something at the end of a test.
class Undo {
  public:
    explicit Undo(std::function<void()> action) : action_(std::move(action)) {}
    ~Undo() { action_(); }
    Undo(const Undo&) = delete;
    Undo& operator=(const Undo&) = delete;

  private:
    std::function<void()> action_;
};

// Moves a file of the driver folder away, under a name that nobody looks for or a given one.
class MovedFile {
  public:
    explicit MovedFile(const std::string& name, const std::string& to = "moved.away");
    ~MovedFile();
    MovedFile(const MovedFile&) = delete;
    MovedFile& operator=(const MovedFile&) = delete;

  private:
    std::string from_;
    std::string to_;
};

// A file that a test puts somewhere; what was there stands aside meanwhile.
class PlantedFile {
  public:
    PlantedFile(const std::string& path, const std::string& bytes);
    ~PlantedFile();
    PlantedFile(const PlantedFile&) = delete;
    PlantedFile& operator=(const PlantedFile&) = delete;

  private:
    std::string path_;
};

// Has a process that has not begun load a DLL first, which comes before the program's own start.
void loadFirst(HANDLE process, const std::string& library);

// Writes a text into the key of a printer; an empty one deletes the value.
void setOfPrinter(const std::string& printerAndKey, const char* name, const std::string& text);

// Asks the demo's companions to end and waits until they have.
void endCompanions();

// Ends every program of that file name, whether or not it has a window, and waits until they are
// gone.
void endPrograms(const std::string& fileName);

// Runs vok-doctor with the arguments for the demo's printer.
Outcome doctor(const std::string& arguments,
               const std::function<void(HANDLE process)>& beforeItRuns = {});

// The first line of the output that begins with "problem"; empty when there is none.
std::string firstProblem(const std::string& output);

// The demo is installed and its log is on; what a test plants it takes out again.
class DoctorTest : public testing::Test {
  protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    // Expects exit status 1 and a first problem whose page is that of the anchor.
    static void expectProblem(const Outcome& outcome, const std::string& anchor);
    static void expectProblem(const std::string& arguments, const std::string& anchor);
};

}  // namespace vok::test
