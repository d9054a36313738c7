/**
 * @file settings.h
 * Where the demo software keeps its settings: one registry key for each model below
 * HKEY_LOCAL_MACHINE, which the configuration library names to the library and everything here
 * uses.
 *
 * | value or key | type | meaning |
 * |---|---|---|
 * | TraceFile | text | file to which print processor and companions append what they do; none: no
 * trace | | Companion\DRAL, Companion\NEMB | keys | the companions' scripted replies, see
 * reply_script.h | | XFiles\Logger | key | the library's own logging options |
 */
#pragma once

#include <string>

namespace vok::sample {

/// What stands before and behind the model in the path of its base key.
inline constexpr char base_key_head[] = "SOFTWARE\\";
inline constexpr char base_key_tail[] = "\\Printer";

/// Path of the base key below HKEY_LOCAL_MACHINE: "SOFTWARE\DEMO\Printer" for the model DEMO.
std::string baseKey();

/// From now on this program serves another model than the one it was built for. A program that
/// takes its model from its file name says so once, before it uses a setting.
void serveModel(const std::string& prefix);

inline constexpr char trace_file_value[] = "TraceFile";
inline constexpr char companion_key[] = "\\Companion\\";

/// The text of a value of the base key, or of a key below it; empty when there is none.
/// @param below Empty, or the path of a key below the base key, beginning with a backslash.
std::string readSetting(const std::string& below, const char* value);

/// Writes a text value and makes the key when it is missing. The result is a system error code.
long writeSetting(const std::string& below, const char* value, const std::string& text);

/// The same for a number.
long writeSetting(const std::string& below, const char* value, unsigned long number);

}  // namespace vok::sample
