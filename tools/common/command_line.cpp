#include "common/command_line.h"

#include <string>

#include "common/output.h"

namespace vok::tools {

bool parse(CLI::App& app, int count, const char* const* words, int& status) {
    // Paths may begin with a slash.
    app.allow_windows_style_options(false);
    try {
        app.parse(count, words);
        return true;
    } catch (const CLI::CallForHelp&) {
        print(app.help());
        status = allWasPrinted(app.get_name().c_str()) ? 0 : exitMisused;
    } catch (const CLI::ParseError& error) {
        complain(app.get_name() + ": " + error.what() + "\n\n" + app.help());
        status = exitMisused;
    }
    return false;
}

bool allWasPrinted(const char* program) {
    const bool arrived = isAllPrinted();
    if (!arrived) {
        complain(std::string(program) + ": can't write to the standard output\n");
    }
    return arrived;
}

}  // namespace vok::tools
