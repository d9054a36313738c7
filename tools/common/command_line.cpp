#include "common/command_line.h"

#include <cstdio>
#include <optional>
#include <string>

namespace vok::tools {

std::optional<int> parse(CLI::App& app, int count, const char* const* words) {
    // Paths may begin with a slash.
    app.allow_windows_style_options(false);
    try {
        app.parse(count, words);
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        print(app.help());
        return allWasPrinted(app.get_name()) ? 0 : exitMisused;
    } catch (const CLI::ParseError& error) {
        complain(app.get_name() + ": " + error.what() + "\n\n" + app.help());
        return exitMisused;
    }
}

void print(const std::string& text) {
    // The stream remembers what fails.
    static_cast<void>(std::fputs(text.c_str(), stdout));
    static_cast<void>(std::fflush(stdout));
}

bool allWasPrinted(const std::string& program) {
    const bool arrived = std::ferror(stdout) == 0;
    if (!arrived) {
        complain(program + ": can't write to the standard output\n");
    }
    return arrived;
}

void complain(const std::string& text) {
    static_cast<void>(std::fputs(text.c_str(), stderr));
}

}  // namespace vok::tools
