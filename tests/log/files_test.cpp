// The customer's files are never harmed, and are read however they were written.
#include "trust.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

int shell(const std::string& command) {
    return WEXITSTATUS(std::system(command.c_str()));
}

TEST_F(Trust, TheLogItselfIsNeverWrittenTo) {
    log_.pipeJob("P", 0xA0, 1);
    const TemporaryFile file;
    file.write(text_);
    const std::string link = file.path() + ".link";
    const std::string hardLink = file.path() + ".hard";
    fs::create_symlink(file.path(), link);
    fs::create_hard_link(file.path(), hardLink);
    const fs::path path(file.path());
    const std::string spelled = (path.parent_path() / "." / path.filename()).string();
    for (const std::string& output : {file.path(), link, hardLink, spelled}) {
        EXPECT_EQ(runReader({"-o", output, file.path()}).status, 2) << output;
        EXPECT_EQ(runReader({"--messages", "-o", output, file.path()}).status, 2) << output;
        EXPECT_EQ(file.read(), text_) << output;
    }
    const std::string reader = VOK_LOG_PROGRAM;
    EXPECT_EQ(shell(reader + " " + file.path() + " 2>/dev/null >>" + file.path()), 2);
    EXPECT_EQ(shell(reader + " -o " + file.path() + " - 2>/dev/null <" + file.path()), 2);
    EXPECT_EQ(file.read(), text_);
    fs::remove(link);
    fs::remove(hardLink);
}

TEST_F(Trust, AnAccountThatCouldNotBeWrittenLeavesTheEarlierOne) {
    log_.pipeJob("P", 0xA0, 20);
    const TemporaryFile file;
    file.write(text_);
    const fs::path folder = file.path() + ".folder";
    fs::create_directory(folder);
    const std::string out = (folder / "out.json").string();
    EXPECT_EQ(shell("echo earlier >" + out), 0);
    EXPECT_EQ(shell("trap '' XFSZ; ulimit -f 1; " + std::string(VOK_LOG_PROGRAM) + " --json -o " +
                    out + " " + file.path() + " 2>/dev/null"),
              2);
    EXPECT_EQ(readFile(out), "earlier\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
    EXPECT_EQ(runReader({"--json", "-o", out, file.path()}).status, 0);
    EXPECT_EQ(json::parse(readFile(out))["jobs"].size(), 1u);
    fs::remove_all(folder);
}

std::string utf16(const std::string& text, bool big) {
    std::string out = big ? "\xFE\xFF" : "\xFF\xFE";
    for (const char byte : text) {
        out += big ? std::string(1, '\0') + byte : std::string(1, byte) + '\0';
    }
    return out;
}

TEST_F(Trust, EditorsEncodingsAreRead) {
    log_.pipeJob("P", 0xA0, 300);
    for (const std::string& text :
         {"\xEF\xBB\xBF" + text_, utf16(text_, false), utf16(text_, true)}) {
        const json all = accountOf(text);
        EXPECT_EQ(all["jobs"][0]["pages"], 300);
        EXPECT_EQ(all["summary"]["lines"]["torn"], 0);
        EXPECT_EQ(all["summary"]["lines"]["foreign"], 0);
    }
}

TEST_F(Trust, WhatIsNoLogIsCalledSo) {
    const std::string dll = "MZ" + std::string(3000, '\0') + "\nThis program\n";
    for (const std::string& bytes :
         {std::string(), dll, readFile(std::string(VOK_SOURCE_DIR) + "/README.md")}) {
        text_ = bytes;
        const RunResult shown = table();
        EXPECT_EQ(shown.status, 2);
        EXPECT_TRUE(contains(shown.error, "no log: ")) << shown.error;
        // What is said of a log's lines, of a full disk for instance, does not hold for it.
        EXPECT_FALSE(contains(shown.out, "[log-")) << shown.out;
        const TemporaryFile file;
        file.write(text_);
        const json all = json::parse(runReader({"--json", file.path()}).out)["summary"];
        EXPECT_EQ(all["notLogs"][0]["file"], file.path());
        EXPECT_TRUE(contains(shown.error, all["notLogs"][0]["why"]));
        EXPECT_EQ(all["lines"]["lines"], 0);
        EXPECT_TRUE(contains(runReader({"--html", file.path()}).out, " is no log: "));
    }
}

}  // namespace
}  // namespace vok::test
