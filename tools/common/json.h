// Writing JSON: objects of texts, numbers and lists, as the tools' --json prints them.
#ifndef VOK_TOOLS_COMMON_JSON_H
#define VOK_TOOLS_COMMON_JSON_H

#include <string>
#include <vector>

namespace vok::tools {

// The text as UTF-8, which JSON and XML want; the system's texts are in its ANSI code page.
std::string toUtf8(const std::string& text);

// A quoted JSON string.
std::string jsonText(const std::string& text);

std::string jsonList(const std::vector<std::string>& items);

// One object, built member by member.
class JsonObject {
  public:
    JsonObject& text(const std::string& name, const std::string& value);
    JsonObject& number(const std::string& name, unsigned long value);
    // A value that is JSON already.
    JsonObject& raw(const std::string& name, const std::string& value);

    std::string str() const { return "{" + members_ + "}"; }

  private:
    std::string members_;
};

}  // namespace vok::tools

#endif
