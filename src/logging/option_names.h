// The logging options in the registry, by name.
#pragma once

namespace vok {

inline constexpr const char* optionCommonLog = "CommonLog";
inline constexpr const char* optionStart = "startLog";
inline constexpr const char* optionAll = "All";
inline constexpr const char* optionClock = "Clocktime_In_Header";
inline constexpr const char* optionProcessId = "Proc_Id_In_Header";
inline constexpr const char* optionThreadId = "Thread_Id_In_Header";

// What the exports log under: their category, whose name is an option too, their file behind the
// model prefix, and the family of programs that shares the options.
inline constexpr const char* exportCategory = "VOK";
inline constexpr const char* exportLogFile = "Vok.log";
inline constexpr const char* exportAppName = "XFiles";

}  // namespace vok
