// The companion check passes the sample's companions, and fails each companion with a fault in the
// check that names the fault.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "live/child.h"

namespace vok::test {
namespace {

// Long enough for any machine that runs tests at all.
constexpr char ample[] = "30000";

std::string temporary(const std::string& name) {
    std::array<char, MAX_PATH> folder{};
    GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    return folder.data() + name;
}

// A companion under a file name of its own, in a folder of this test.
class CompanionFile {
  public:
    CompanionFile(const std::string& source, const std::string& name)
        : folder_(temporary("check test " + std::to_string(GetCurrentProcessId()))),
          path_(folder_ + "\\" + name) {
        CreateDirectoryA(folder_.c_str(), nullptr);
        EXPECT_NE(CopyFileA(source.c_str(), path_.c_str(), FALSE), 0) << source;
    }
    ~CompanionFile() {
        DeleteFileA(path_.c_str());
        RemoveDirectoryA(folder_.c_str());
    }
    CompanionFile(const CompanionFile&) = delete;
    CompanionFile& operator=(const CompanionFile&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string folder_;
    std::string path_;
};

Outcome check(const std::string& companion, const std::string& arguments) {
    return runProgram(product("vok-companion-check.exe") + " \"" + companion + "\" " + arguments);
}

std::string firstFailure(const std::string& output) {
    std::istringstream lines(output);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string result;
        std::string name;
        words >> result >> name;
        if (result == "FAIL") {
            return name;
        }
    }
    return {};
}

// The names of all checks, in their order.
std::vector<std::string> checksIn(const std::string& output) {
    std::vector<std::string> names;
    std::istringstream lines(output);
    std::string result;
    std::string name;
    std::string rest;
    while (lines >> result >> name && std::getline(lines, rest)) {
        names.push_back(name);
    }
    return names;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

struct Fault {
    const char* file;
    const char* check;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.file;
}

class WrongCompanion : public testing::TestWithParam<Fault> {};

TEST_P(WrongCompanion, FailsTheCheckThatNamesItsFault) {
    const CompanionFile file(WRONG_COMPANION, GetParam().file);
    Outcome outcome;
    // More than once: a machine may be too busy for that limit, or for the pause of a slow host.
    for (const char* limit : {"2000", ample, ample, ample}) {
        outcome = check(file.path(), std::string("--stop --limit ") + limit);
        if (firstFailure(outcome.output) == GetParam().check) {
            break;
        }
    }
    EXPECT_EQ(outcome.status, 1u) << outcome.output;
    EXPECT_EQ(firstFailure(outcome.output), GetParam().check) << outcome.output;
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind, WrongCompanion,
    testing::Values(Fault{"TITLDRAL.EXE", "window-title"}, Fault{"HIDEDRAL.EXE", "hidden-window"},
                    Fault{"CLASNEMB.EXE", "window-class"}, Fault{"MUTXNEMB.EXE", "mutex"},
                    Fault{"TWINNEMB.EXE", "second-instance"},
                    Fault{"WORDDRAL.EXE", "message-reply"}, Fault{"CANCNEMB.EXE", "message-cancel"},
                    Fault{"DIESDRAL.EXE", "message-two-jobs"},
                    Fault{"SINGDRAL.EXE", "two-printers"}, Fault{"NOPIDRAL.EXE", "pipe-opens"},
                    Fault{"SHRTNEMB.EXE", "pipe-reply-size"},
                    Fault{"FRAMDRAL.EXE", "pipe-frame-size"},
                    Fault{"FRAMNEMB.EXE", "pipe-frame-size"},
                    Fault{"ONCENEMB.EXE", "pipe-two-jobs"}, Fault{"LOSTDRAL.EXE", "lost-host"},
                    Fault{"BUSYNEMB.EXE", "busy"}, Fault{"IDLEDRAL.EXE", "slow-host"}),
    [](const testing::TestParamInfo<Fault>& fault) {
        return std::string(fault.param.file).substr(0, 8);
    });

// A companion that keeps the check waiting, and what the checks say of it.
struct Silence {
    const char* file;
    std::set<std::string> checks;  // those that have to fail
    const char* text;              // with this and the limit in what they say
};

const std::set<std::string> windowJobs = {"second-instance", "message-job",      "message-reply",
                                          "message-cancel",  "message-two-jobs", "two-printers"};
const std::set<std::string> pipeJobs = {
    "pipe-job",      "pipe-reply-size",   "pipe-frame-size", "pipe-cancel",
    "pipe-two-jobs", "pipe-two-printers", "lost-host",       "busy",
    "slow-host",     "impatient-host"};

std::set<std::string> together(std::set<std::string> some, const std::set<std::string>& others) {
    some.insert(others.begin(), others.end());
    return some;
}

const Silence silences[] = {
    {"HANGDRAL.EXE", together(windowJobs, {"window-title", "hidden-window", "found-again", "busy"}),
     "its window is there and answers no message"},
    {"HANGNEMB.EXE", together(windowJobs, {"window-title", "window-class", "found-again", "busy"}),
     "its window is there and answers no message"},
    {"LATEDRAL.EXE", together(windowJobs, pipeJobs), ": no answer"},
    {"LATENEMB.EXE", together(windowJobs, pipeJobs), ": no answer"},
    {"NOPIDRAL.EXE", together(pipeJobs, {"pipe-opens"}), " was not opened"},
    {"NOPINEMB.EXE", together(pipeJobs, {"pipe-opens"}), " was not opened"}};

Outcome checkWithin(const Silence& silence, int limit) {
    const CompanionFile file(WRONG_COMPANION, silence.file);
    return check(file.path(), "--json --limit " + std::to_string(limit));
}

// What is wrong with checks whose waits had so many milliseconds; empty when all that the companion
// is silent to have ended in time and say what they have to.
std::string wrongWith(const Silence& silence, const Outcome& outcome, int limit) {
    // One wait in vain: whoever has a second one needs as much again.
    const int bound = 2 * limit;
    const std::string within = " within " + std::to_string(limit) + " ms";
    const auto checks = nlohmann::json::parse(outcome.output).at("checks");
    std::string wrong = outcome.status == 1 && checks.size() >= 20 ? "" : outcome.output;
    std::set<std::string> rest = silence.checks;
    for (const auto& item : checks) {
        const bool silent = rest.erase(item.at("check")) != 0;
        const bool late = silent && item.at("milliseconds") >= bound;
        const auto text = item.at("text").get<std::string>();
        const bool told =
            item.at("result") == "fail" && text.find(silence.text + within) != std::string::npos;
        if (late || (silent && !told)) {
            wrong += item.dump() + "\n";
        }
    }
    return rest.empty() ? wrong : wrong + *rest.begin() + " was not made";
}

// All of them wait at once: one after another they would be the longest test of all.
TEST(SilentCompanion, EndsNoCheckLate) {
    constexpr int limit = 3000;
    constexpr int ofBusyMachine = 20000;
    std::array<Outcome, std::size(silences)> outcomes;
    std::vector<std::thread> checks;
    for (std::size_t index = 0; index < outcomes.size(); ++index) {
        checks.emplace_back(
            [&outcome = outcomes[index], index] { outcome = checkWithin(silences[index], limit); });
    }
    for (std::thread& one : checks) {
        one.join();
    }
    for (std::size_t index = 0; index < outcomes.size(); ++index) {
        const Silence& silence = silences[index];
        std::string wrong = wrongWith(silence, outcomes[index], limit);
        if (!wrong.empty()) {
            wrong = wrongWith(silence, checkWithin(silence, ofBusyMachine), ofBusyMachine);
        }
        EXPECT_EQ(wrong, "") << silence.file;
    }
}

class RightCompanion : public testing::TestWithParam<const char*> {};

TEST_P(RightCompanion, KeepsTheContract) {
    const Outcome outcome =
        check(productFolder() + "/" + GetParam(), std::string("--limit ") + ample);
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    EXPECT_EQ(firstFailure(outcome.output), "") << outcome.output;
    const std::vector<std::string> checks = checksIn(outcome.output);
    EXPECT_GE(checks.size(), 20u) << outcome.output;
    const std::string page = fileText(VOK_SOURCE_FOLDER "/docs/companions.md");
    for (const std::string& name : checks) {
        EXPECT_NE(page.find("| `" + name + "` |"), std::string::npos) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(OfTheSamples, RightCompanion,
                         testing::Values("DEMODRAL.EXE", "DEMONEMB.EXE"),
                         [](const testing::TestParamInfo<const char*>& file) {
                             return std::string(file.param).substr(0, 8);
                         });

// The wrong companion without its fault: what the others fail is the fault alone.
TEST(CompanionCheck, TheWrongCompanionWithoutAFaultIsRight) {
    for (const char* name : {"GOODDRAL.EXE", "GOODNEMB.EXE"}) {
        const CompanionFile file(WRONG_COMPANION, name);
        const Outcome outcome = check(file.path(), std::string("--limit ") + ample);
        EXPECT_EQ(outcome.status, 0u) << outcome.output;
    }
}

TEST(CompanionCheck, AFileNameThatIsNoCompanions) {
    const CompanionFile file(WRONG_COMPANION, "STATUS.EXE");
    const Outcome outcome = check(file.path(), "");
    EXPECT_EQ(outcome.status, 1u) << outcome.output;
    EXPECT_EQ(firstFailure(outcome.output), "file-name");
}

TEST(CompanionCheck, ResultsAsJsonAndJunit) {
    const CompanionFile file(WRONG_COMPANION, "TITLDRAL.EXE");
    const std::string junit = temporary("check junit " + std::to_string(GetCurrentProcessId()));
    const Outcome outcome =
        check(file.path(), "--stop --limit 1000 --json --junit \"" + junit + "\"");
    EXPECT_EQ(outcome.status, 1u);
    const auto results = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(results.at("checks").at(0).at("check"), "window-title") << outcome.output;
    EXPECT_EQ(results.at("checks").at(0).at("result"), "fail") << outcome.output;
    EXPECT_EQ(results.at("failures"), 1) << outcome.output;
    EXPECT_EQ(results.at("skipped"), 0) << outcome.output;
    const std::string xml = fileText(junit);
    EXPECT_NE(xml.find("<testsuite name=\"TITLDRAL.EXE\" tests=\"1\" failures=\"1\" "
                       "skipped=\"0\">"),
              std::string::npos)
        << xml;
    EXPECT_EQ(count(xml, "<failure message="), 1u) << xml;
    DeleteFileA(junit.c_str());
}

// Wine shows a program the Windows version that stands under the program's name.
class WindowsVersion {
  public:
    WindowsVersion(const std::string& program, const std::string& version)
        : key_(R"(Software\Wine\AppDefaults\)" + program) {
        EXPECT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, key_.c_str(), "Version", REG_SZ,
                                  version.c_str(), static_cast<DWORD>(version.size() + 1)),
                  ERROR_SUCCESS);
    }
    ~WindowsVersion() { RegDeleteTreeA(HKEY_CURRENT_USER, key_.c_str()); }
    WindowsVersion(const WindowsVersion&) = delete;
    WindowsVersion& operator=(const WindowsVersion&) = delete;

  private:
    std::string key_;
};

struct OldWindows {
    const char* version;
    const char* prefix;  // a model of its own, so that the companion's version is nobody else's
};

void PrintTo(const OldWindows& system, std::ostream* out) {
    *out << system.version;
}

class SystemWithoutPipes : public testing::TestWithParam<OldWindows> {};

// Expects that the pipe route's checks are skipped for that reason, and that all others passed.
void expectSkipped(const std::string& output, std::size_t skipped) {
    EXPECT_EQ(count(output, "FAIL  "), 0u) << output;
    EXPECT_EQ(count(output, "skip  "), skipped) << output;
    EXPECT_EQ(count(output, "the library has no pipe route on this system (version "), skipped);
    EXPECT_EQ(count(output, "skip  pipe-job "), 1u);
    EXPECT_EQ(count(output, "pass  message-job "), 1u) << output;
}

TEST_P(SystemWithoutPipes, SkipsThePipeRoute) {
    const auto& [version, prefix] = GetParam();
    const std::string program = std::string("check-") + version + ".exe";
    const CompanionFile checker(productFolder() + "/vok-companion-check.exe", program);
    const WindowsVersion checkers(program, version);
    const std::string junit = temporary(std::string("check junit ") + version);
    constexpr std::size_t pipeChecks = 11;
    for (const char* role : {"DRAL.EXE", "NEMB.EXE"}) {
        const CompanionFile companion(productFolder() + "/DEMO" + role, prefix + std::string(role));
        const WindowsVersion companions(prefix + std::string(role), version);
        const auto run = [&](const std::string& format) {
            return runProgram("\"" + checker.path() + "\" \"" + companion.path() + "\" --library " +
                              product("DEMOvok.dll") + " --limit " + ample + format);
        };
        // NEMB's mutex is looked for on the pipe route alone.
        const std::size_t skipped = pipeChecks + (role[0] == 'N' ? 1 : 0);
        const Outcome text = run(" --junit \"" + junit + "\"");
        EXPECT_EQ(text.status, 0u) << text.output;
        expectSkipped(text.output, skipped);
        EXPECT_EQ(count(fileText(junit), "<skipped message=\"the library has no pipe route"),
                  skipped);
        const std::string total = std::to_string(skipped);
        EXPECT_EQ(count(fileText(junit), "failures=\"0\" skipped=\"" + total + "\">"), 1u);
        const Outcome json = run(" --json");
        EXPECT_EQ(count(json.output, R"("result": "skip")"), skipped) << json.output;
        const auto results = nlohmann::json::parse(json.output);
        EXPECT_EQ(results.at("failures"), 0);
        EXPECT_EQ(results.at("skipped"), skipped);
    }
    DeleteFileA(junit.c_str());
}

INSTANTIATE_TEST_SUITE_P(OnOldWindows, SystemWithoutPipes,
                         testing::Values(OldWindows{"win98", "98CK"}, OldWindows{"nt40", "40CK"},
                                         OldWindows{"win2k", "50CK"}),
                         [](const testing::TestParamInfo<OldWindows>& system) {
                             return std::string(system.param.version);
                         });

TEST(CompanionCheck, MisuseIsSaid) {
    const std::string companion = productFolder() + "/DEMODRAL.EXE";
    for (const char* arguments : {"--bad", "--limit 0", "--limit 5s", "--limit", "second.exe",
                                  "--library C:\\no-such.dll"}) {
        EXPECT_EQ(check(companion, arguments).status, 2u) << arguments;
    }
    EXPECT_EQ(check("C:\\no-such-DRAL.EXE", "").status, 2u);
}

TEST(CompanionCheck, LostOutputIsNoSuccess) {
    const std::string program = product("vok-companion-check.exe");
    const std::string companion = " \"" + productFolder() + "/DEMODRAL.EXE\"";
    for (const std::string& arguments : {std::string(" --help"), companion + " --json"}) {
        const Outcome outcome = runWithoutOutput(program + arguments);
        EXPECT_EQ(outcome.status, 2u) << arguments;
        EXPECT_NE(outcome.output.find("can't write to the standard output"), std::string::npos);
    }
}

}  // namespace
}  // namespace vok::test
