/**
 * @file command_line.h
 * Who a companion is, and which printer it serves: both are told by its file name and its command
 * line alone.
 */
#pragma once

#include <optional>
#include <string>

namespace vok::sample {

enum class Role { Dral, Nemb };

/// What the file name says: `DEMODRAL.EXE` is DRAL of the model DEMO.
struct Identity {
    Role role;
    std::string prefix;
};

/// @param path Full path or bare name of the program's file, in any case.
/// @return Nothing when the name is not four characters and DRAL.EXE or NEMB.EXE.
std::optional<Identity> parseFileName(const std::string& path);

/// The printer's friendly name out of a command line as the library writes it: not quoted, blanks
/// and all, to the end of the line or to " /J=1". Nothing when the line names no printer.
std::optional<std::string> parsePrinter(const std::string& commandLine);

const char* roleName(Role role);

}  // namespace vok::sample
