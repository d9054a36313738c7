// A program or DLL as it lies on the disk.
#ifndef VOK_TOOLS_DOCTOR_PROGRAM_FILE_H
#define VOK_TOOLS_DOCTOR_PROGRAM_FILE_H

#include <string>

namespace vok::doctor {

// "has 512 of its 2048 bytes" when the file is shorter than its own headers say; else empty, for
// what is no program too.
std::string whatIsCut(const std::string& path);

// Whether the text stands somewhere in the file, as the names of functions do that a program calls
// by name.
bool holdsText(const std::string& path, const std::string& text);

// "1.2.3.0" by the version resource; empty when there is none.
std::string versionOf(const std::string& path);

// The name that the file was built under, by its version resource; empty when it tells none.
std::string nameOfTheBuild(const std::string& path);

}  // namespace vok::doctor

#endif
