// The companion check passes the sample's companions, and fails each companion with a fault in the
// check that names the fault.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <ostream>
#include <sstream>
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
    Outcome outcome = check(file.path(), "--stop --limit 2000");
    if (firstFailure(outcome.output) != GetParam().check) {
        // A machine that is too busy for that limit.
        outcome = check(file.path(), std::string("--stop --limit ") + ample);
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

class RightCompanion : public testing::TestWithParam<const char*> {};

TEST_P(RightCompanion, KeepsTheContract) {
    const Outcome outcome =
        check(VOK_PRODUCT_FOLDER "/" + std::string(GetParam()), std::string("--limit ") + ample);
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
    EXPECT_NE(outcome.output.find(R"({"check": "window-title", "result": "fail", "text": )"),
              std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find(R"("failures": 1})"), std::string::npos) << outcome.output;
    const std::string xml = fileText(junit);
    EXPECT_NE(xml.find("<testsuite name=\"TITLDRAL.EXE\" tests=\"1\" failures=\"1\">"),
              std::string::npos)
        << xml;
    EXPECT_EQ(count(xml, "<failure message="), 1u) << xml;
    DeleteFileA(junit.c_str());
}

TEST(CompanionCheck, MisuseIsSaid) {
    const std::string companion = VOK_PRODUCT_FOLDER "/DEMODRAL.EXE";
    for (const char* arguments : {"--bad", "--limit 0", "--limit 5s", "--limit", "second.exe",
                                  "--library C:\\no-such.dll"}) {
        EXPECT_EQ(check(companion, arguments).status, 2u) << arguments;
    }
    EXPECT_EQ(check("C:\\no-such-DRAL.EXE", "").status, 2u);
}

}  // namespace
}  // namespace vok::test
