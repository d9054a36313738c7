// vok-doctor's command line.
#ifndef VOK_TOOLS_DOCTOR_COMMAND_LINE_H
#define VOK_TOOLS_DOCTOR_COMMAND_LINE_H

#include <optional>
#include <string>

namespace vok::doctor {

// What --log makes of the options of the log.
enum class LogSetting { Leave, On, Off, All, Default };

struct Options {
    std::string library;  // path of the DLL; empty: the one in the driver folder
    std::string printer;  // empty: the one that has the model's printer data
    std::string suffix;   // what follows "DRAL Hidden Window-"; empty: the printer's name
    std::optional<unsigned long> spoolerSession;  // none: where the spooler's service runs
    LogSetting log = LogSetting::Leave;
    bool launch = false;
    bool json = false;
};

// Nothing when the program is to end with `status`.
std::optional<Options> parseCommandLine(int count, const char* const* words, int& status);

}  // namespace vok::doctor

#endif
