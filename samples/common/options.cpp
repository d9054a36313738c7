#include "options.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace vok::sample {
namespace {

/// The name that this program was started by, without folder and ".exe".
std::string programName() {
    const std::string path = __argv[0];
    const std::size_t slash = path.find_last_of("\\/");
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name.ends_with(".exe"))
        name.resize(name.size() - 4);
    return name;
}

}  // namespace

std::string Options::get(const std::string& name, const std::string& otherwise) const {
    const auto found = values.find(name);
    return found == values.end() ? otherwise : found->second;
}

std::optional<Options> parseOptions(int count, char** words,
                                    std::initializer_list<const char*> known) {
    Options options;
    for (int index = 1; index < count; ++index) {
        const std::string_view word = words[index];
        if (!word.starts_with("--")) {
            if (!options.argument.empty()) {
                complain("one argument too many: " + std::string(word));
                return std::nullopt;
            }
            options.argument = word;
            continue;
        }
        if (std::find(known.begin(), known.end(), word) == known.end()) {
            complain("unknown option " + std::string(word));
            return std::nullopt;
        }
        if (++index == count) {
            complain("no value for " + std::string(word));
            return std::nullopt;
        }
        options.values[std::string(word)] = words[index];
    }
    return options;
}

void complain(const std::string& text) {
    static_cast<void>(std::fprintf(stderr, "%s: %s\n", programName().c_str(), text.c_str()));
}

}  // namespace vok::sample
