#include "expect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include "call_filter.h"
#include "system.h"

namespace vok::test {
namespace {

std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "  " + line + "\n";
    }
    return text;
}

void expectSame(const Lines& actual, const Lines& expected, const std::string& what) {
    const auto [a, e] =
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    if (a == actual.end() && e == expected.end()) {
        return;
    }
    const auto shown = [](const Lines& lines, auto it) {
        return it == lines.end() ? std::string("(end)") : "[" + *it + "]";
    };
    ADD_FAILURE() << what << " differs at line " << (a - actual.begin() + 1) << "\n  is       "
                  << shown(actual, a) << "\n  expected " << shown(expected, e) << "\nwhole:\n"
                  << joined(actual);
}

bool hasClock(const std::string& line) {
    constexpr std::string_view form = "dddd/dd/dd-dd:dd:dd.ddd ";
    if (line.size() < form.size()) {
        return false;
    }
    return std::equal(form.begin(), form.end(), line.begin(), [](char wanted, char is) {
        return wanted == 'd' ? std::isdigit(static_cast<unsigned char>(is)) != 0 : wanted == is;
    });
}

constexpr size_t clockLength = 24;

}  // namespace

std::string withoutClock(const std::string& line) {
    return hasClock(line) ? line.substr(clockLength) : line;
}

Lines withoutClock(const Lines& lines) {
    Lines result;
    for (const std::string& line : lines) {
        result.push_back(withoutClock(line));
    }
    return result;
}

void expectLog(const System& system, const std::string& path, const Lines& expected) {
    expectSame(withoutClock(system.files.lines(path)), expected, "log " + path);
}

void expectMessages(const System& system, const Lines& expected) {
    Lines full;
    for (const std::string& message : expected) {
        full.push_back("VOK        " + message);
    }
    expectLog(system, system.logPath(), full);
}

Lines callNames(const System& system) {
    Lines result;
    for (const CallRecord* call : callsOfTheWork(system)) {
        result.push_back(call->name);
    }
    return result;
}

Lines callLines(const System& system) {
    Lines result;
    for (const CallRecord* call : callsOfTheWork(system)) {
        result.push_back(call->line());
    }
    return result;
}

void expectCalls(const System& system, const Lines& expected) {
    expectSame(callNames(system), expected, "list of calls");
}

void expectCallsOf(const System& system, std::string_view function, const Lines& expected) {
    expectSame(system.calls.linesOf(function), expected,
               "list of calls of " + std::string(function));
}

void expectNoLeaks(const System& system, const Lines& left) {
    expectSame(system.handles.openNames(), left, "list of open handles");
    expectSame(system.complaints, {}, "list of complaints");
}

}  // namespace vok::test
