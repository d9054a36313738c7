// What tests expect of logs and of the recorded calls, with readable failures.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

class System;

using Lines = std::vector<std::string>;

// The line without "2024/03/07-09:05:01.042 " at its beginning, if it begins like that.
std::string withoutClock(const std::string& line);
Lines withoutClock(const Lines& lines);

// The log consists of exactly these lines, clock fields apart.
void expectLog(const System& system, const std::string& path, const Lines& expected);
// The same of the log at System::logPath, of messages alone: "VOK        " is put before each.
void expectMessages(const System& system, const Lines& expected);

// Names of the recorded calls in order, without those of the logging (call_filter.h).
Lines callNames(const System& system);
// The same calls as lines with their arguments and results.
Lines callLines(const System& system);
// The names of those calls are exactly these.
void expectCalls(const System& system, const Lines& expected);
// The lines of one function's calls are exactly these.
void expectCallsOf(const System& system, std::string_view function, const Lines& expected);

// Nothing is left open but `left` (as in "pipe#1"), and nothing was complained of.
void expectNoLeaks(const System& system, const Lines& left = {});

}  // namespace vok::test
