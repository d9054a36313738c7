#include "command_line.h"

#include <vok/companion.h>

#include <optional>
#include <string>
#include <string_view>

namespace vok::sample {

std::optional<Identity> parseFileName(const std::string& path) {
    const std::size_t slash = path.find_last_of("\\/");
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    constexpr std::size_t prefix_length = VOK_MODEL_PREFIX_LENGTH;
    if (name.size() < prefix_length)
        return std::nullopt;
    const std::string prefix = name.substr(0, prefix_length);
    const std::string rest = name.substr(prefix_length);
    if (lstrcmpiA(rest.c_str(), VOK_DRAL_EXE) == 0)
        return Identity{Role::Dral, prefix};
    if (lstrcmpiA(rest.c_str(), VOK_NEMB_EXE) == 0)
        return Identity{Role::Nemb, prefix};
    return std::nullopt;
}

std::optional<std::string> parsePrinter(const std::string& commandLine) {
    constexpr std::string_view argument = VOK_ARG_PRINTER;
    const std::size_t start = commandLine.find(argument);
    if (start == std::string::npos)
        return std::nullopt;
    std::string printer = commandLine.substr(start + argument.size());
    if (printer.ends_with(VOK_ARG_JOB))
        printer.resize(printer.size() - (sizeof(VOK_ARG_JOB) - 1));
    return printer;
}

const char* roleName(Role role) {
    return role == Role::Dral ? "DRAL" : "NEMB";
}

}  // namespace vok::sample
