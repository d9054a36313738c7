// System errors as people read them.
#ifndef VOK_TOOLS_COMMON_SYSTEM_TEXT_H
#define VOK_TOOLS_COMMON_SYSTEM_TEXT_H

#include <string>

namespace vok::tools {

// "error 2, File not found." by the system's own words, or the number alone where it has none.
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

}  // namespace vok::tools

#endif
