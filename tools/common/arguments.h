// The command lines of the tools: one plain argument, flags, and options with a value each.
#ifndef VOK_TOOLS_COMMON_ARGUMENTS_H
#define VOK_TOOLS_COMMON_ARGUMENTS_H

#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace vok::tools {

struct Arguments {
    std::string plain;  // empty when there is none
    std::set<std::string> flags;
    std::map<std::string, std::string> values;

    bool has(const char* flag) const { return flags.contains(flag); }
    // Empty when the option was not given.
    std::string value(const char* option) const;
};

// Nothing, with the reason in `error`, for a word that is not known, an option without its value
// and a second plain argument. Flags and options are named with their dashes.
std::optional<Arguments> parseArguments(int count, const char* const* words,
                                        std::initializer_list<const char*> flags,
                                        std::initializer_list<const char*> options,
                                        std::string& error);

// Nothing for whatever is not a decimal number from the first character to the last.
std::optional<unsigned long> numberIn(const std::string& word);

}  // namespace vok::tools

#endif
