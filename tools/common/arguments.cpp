#include "common/arguments.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <string>
#include <system_error>

namespace vok::tools {

namespace {

bool isOneOf(const std::string& word, std::initializer_list<const char*> known) {
    return std::any_of(known.begin(), known.end(),
                       [&word](const char* name) { return word == name; });
}

}  // namespace

std::string Arguments::value(const char* option) const {
    const auto found = values.find(option);
    return found == values.end() ? std::string() : found->second;
}

std::optional<Arguments> parseArguments(int count, const char* const* words,
                                        std::initializer_list<const char*> flags,
                                        std::initializer_list<const char*> options,
                                        std::string& error) {
    Arguments arguments;
    for (int index = 1; index < count && error.empty(); ++index) {
        const std::string word = words[index];
        if (isOneOf(word, flags)) {
            arguments.flags.insert(word);
        } else if (isOneOf(word, options)) {
            if (index + 1 == count) {
                error = "no value for " + word;
            } else {
                arguments.values[word] = words[++index];
            }
        } else if (word.starts_with("--")) {
            error = "unknown option " + word;
        } else {
            error = arguments.plain.empty() ? "" : "one argument too many: " + word;
            arguments.plain = word;
        }
    }
    return error.empty() ? std::optional(arguments) : std::nullopt;
}

std::optional<unsigned long> numberIn(const std::string& word) {
    unsigned long number = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    if (word.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

}  // namespace vok::tools
