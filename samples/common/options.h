/**
 * @file options.h
 * The command lines of the sample programs: one plain argument, and options with a value each.
 */
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>

namespace vok::sample {

inline constexpr char default_printer[] = "Demo Printer";

/// Exit statuses of the sample programs.
enum { ExitDone = 0, ExitFailed = 1, ExitMisused = 2 };

struct Options {
    std::string argument;                       ///< The one plain argument; empty if there is none.
    std::map<std::string, std::string> values;  ///< By the option's name, its dashes included.

    [[nodiscard]] std::string get(const std::string& name, const std::string& otherwise) const;
};

/// Says on standard error what is wrong with the line, and returns nothing, when it has an option
/// that is not known, an option without a value, or a second plain argument.
std::optional<Options> parseOptions(int count, char** words,
                                    std::initializer_list<const char*> known);

/// Prints "program: text" on standard error.
void complain(const std::string& text);

}  // namespace vok::sample
