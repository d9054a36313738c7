#include "messages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "embedded.h"
#include "findings.h"
#include "support.h"

namespace vok::log {
namespace {

// All text of the library's sources, the first parts of a line joined: {"a", "b"} is "ab".
std::string librarySources() {
    std::string all;
    const std::filesystem::path sources = std::string(VOK_SOURCE_DIR) + "/src";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sources)) {
        if (entry.path().extension() == ".cpp") {
            all += test::readFile(entry.path().string());
        }
    }
    return std::regex_replace(all, std::regex("(logLine\\(\\s*\\{\"[^\"]*)\",\\s*\""), "$1");
}

TEST(Messages, EveryTextIsTheLibrarysLetterByLetter) {
    const std::string sources = librarySources();
    for (const KnownText& text : knownTexts()) {
        EXPECT_NE(sources.find('"' + std::string(text.start)), std::string::npos) << text.start;
    }
}

// What the sources hand to the log, as far as it stands there as text.
std::set<std::string> loggedTexts() {
    const std::string sources = librarySources();
    const std::regex pattern(
        "(?:logLine|logPrintf|logHandle|logUnknownIdentifier)"
        "\\(\\s*\\{?\\s*\"((?:[^\"\\\\]|\\\\.)+)\"");
    std::set<std::string> texts;
    for (std::sregex_iterator found(sources.begin(), sources.end(), pattern), end; found != end;
         ++found) {
        texts.insert((*found)[1]);
    }
    return texts;
}

TEST(Messages, EveryTextThatTheLibraryLogsIsKnown) {
    const std::set<std::string> texts = loggedTexts();
    EXPECT_GT(texts.size(), 60u);
    for (const std::string& text : texts) {
        EXPECT_NE(recognise(text).text.step, Step::Unknown) << text;
    }
}

TEST(Messages, ALongerTextIsNotTakenForAShorterOne) {
    for (const KnownText& text : knownTexts()) {
        const Message message = recognise(text.start);
        EXPECT_EQ(message.text.start, text.start);
    }
}

TEST(Messages, BlanksLostAtTheEndDoNotMatter) {
    EXPECT_EQ(recognise("Sleep 1000 ").text.step, Step::Pause);
    EXPECT_EQ(recognise("hDRAL =").text.step, Step::Window9xFound);
    EXPECT_EQ(recognise("Invalid VokData or Pipe Handle").text.step, Step::NoRecord);
    EXPECT_EQ(recognise("SM_OPENJOB and more").text.step, Step::Unknown);
}

TEST(Messages, ValuesFollowTheKnownStart) {
    const Message message = recognise("SM_OPENJOB. Dral HPIPE = 0x00000000000000A4");
    EXPECT_EQ(message.value, "0x00000000000000A4");
    EXPECT_EQ(message.text.side, Side::Dral);
    EXPECT_EQ(message.text.event, Event::Open);
    EXPECT_EQ(message.text.route, Route::Pipe);
}

TEST(Findings, StandInTheOrderOfTheirNumbers) {
    std::set<std::string> names;
    std::size_t expected = 0;
    for (const FindingText& text : findings()) {
        EXPECT_EQ(static_cast<std::size_t>(text.id), expected++);
        EXPECT_TRUE(names.insert(text.name).second) << text.name;
    }
    EXPECT_EQ(expected, static_cast<std::size_t>(FindingId::JobsCutShort) + 1);
}

TEST(Findings, AreExplainedInTheDocuments) {
    const std::string page =
        test::readFile(std::string(VOK_SOURCE_DIR) + "/docs/troubleshooting.md");
    EXPECT_NE(page.find(messagesPage), std::string::npos)
        << "the messages are not those of the page";
}

}  // namespace
}  // namespace vok::log
