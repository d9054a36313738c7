// What the system says, as people read it, and what it has.
#pragma once

#include <windows.h>

#include <string>

namespace vok::tools {

// "error 2, File not found" by the system's own words, or the number alone where it has none.
std::string errorText(unsigned long error);

// The text as UTF-8, which JSON and XML want; the system's texts are in its ANSI code page.
std::string toUtf8(const std::string& text);

// "version 5.1": what the system tells of itself.
std::string systemVersion();

// What stands behind the last backslash, and what before it.
std::string fileOf(const std::string& path);
std::string folderOf(const std::string& path);

// Whether two names differ in nothing but upper and lower case.
bool sameName(const std::string& left, const std::string& right);

// Folders count too. The last error tells why it is false.
bool fileExists(const std::string& path);

// The file of a loaded module; null: of this program.
std::string pathOf(HMODULE module);

// Sends the window a message that does nothing. False when no answer comes within so many
// milliseconds: a window whose program does not serve it any more is still found.
bool answersMessages(HWND window, DWORD limit);

}  // namespace vok::tools
