#include "record.h"

#include <gtest/gtest.h>

#include <string_view>

#include "text.h"

namespace vok::log {
namespace {

TEST(Record, HasClockIdsCategoryAndMessage) {
    const Line line =
        parseLine("2024/03/07-09:05:01.042 pid=0a3c tid=0f10 VOK        +VOKLaunchXFiles");
    ASSERT_EQ(line.kind, LineKind::Record);
    EXPECT_EQ(clockText(line.record.time), "2024/03/07-09:05:01.042");
    EXPECT_EQ(line.record.processId, 0xa3cu);
    EXPECT_EQ(line.record.threadId, 0xf10u);
    EXPECT_EQ(line.record.category, "VOK");
    EXPECT_EQ(line.record.message, "+VOKLaunchXFiles");
}

TEST(Record, LongIdsAndLongCategoriesAreWhole) {
    const Line line = parseLine("pid=12345 ACategoryOfSixteen message");
    ASSERT_EQ(line.kind, LineKind::Record);
    EXPECT_EQ(line.record.processId, 0x12345u);
    EXPECT_FALSE(line.record.threadId);
    EXPECT_EQ(line.record.time, noTime);
    EXPECT_EQ(line.record.category, "ACategoryOfSixteen");
    EXPECT_EQ(line.record.message, "message");
}

TEST(Record, WithoutAnyHeaderTheColumnTells) {
    EXPECT_EQ(parseLine("VOK        SM_OPENJOB").kind, LineKind::Record);
    EXPECT_EQ(parseLine("VOK        ").kind, LineKind::Record);
    EXPECT_EQ(parseLine("VOK        ").record.message, "");
    EXPECT_EQ(parseLine("A line of another kind").kind, LineKind::Foreign);
    EXPECT_EQ(parseLine("").kind, LineKind::Foreign);
}

TEST(Record, IndentationIsNoPartOfTheMessage) {
    EXPECT_EQ(parseLine("VOK           -StartDRALXP").record.message, "-StartDRALXP");
}

TEST(Record, CriticalRecordsHaveAWiderColumn) {
    const Line line = parseLine(
        "2024/03/07-09:05:01.042 XFilesLogger::CreateInstance() RegistryKey64() exception error=2");
    ASSERT_EQ(line.kind, LineKind::Record);
    EXPECT_EQ(line.record.category, "XFilesLogger::CreateInstance()");
    EXPECT_EQ(line.record.message, "RegistryKey64() exception error=2");
}

TEST(Record, CutOnesAreTorn) {
    for (const char* text :
         {"2024/03/07-09:05:01", "2024/03/07-09:05:01.042", "2024/03/07-09:05:01.042 ",
          "2024/03/07-09:05:01.042 VOK", "2024/03/07-09:05:01.042 pid=0a",
          "2024/13/07-09:05:01.042 VOK        a", "5:01.042 VOK        SM_OPENJOB",
          "pid=xyz VOK        SM_OPENJOB"}) {
        EXPECT_EQ(parseLine(text).kind, LineKind::Torn) << text;
    }
    EXPECT_EQ(parseLine(std::string_view("VOK        SM_\0\0\0OB", 19)).kind, LineKind::Torn);
}

TEST(Record, TheSecondOfTwoOnALineIsFoundAgain) {
    const Line line = parseLine(
        "2024/03/07-09:05:01.042 VOK        SM_OPEN2024/03/07-09:05:02.000 VOK        SM_CLOSEJOB");
    EXPECT_EQ(line.kind, LineKind::Torn);
    EXPECT_EQ(line.rest, "2024/03/07-09:05:02.000 VOK        SM_CLOSEJOB");
    EXPECT_EQ(parseLine(line.rest).kind, LineKind::Record);
    EXPECT_EQ(parseLine("noise 2024/03/07-09:05:02.000 VOK        SM_CLOSEJOB").kind,
              LineKind::Foreign);
}

TEST(Text, ForeignBytesBecomeUtf8) {
    EXPECT_EQ(toUtf8("plain"), "plain");
    EXPECT_EQ(toUtf8("B\xfcro \x80"), "Büro €");
    EXPECT_EQ(toUtf8("Büro"), "Büro");
    EXPECT_EQ(toUtf8("\x81"), "\xEF\xBF\xBD");
    EXPECT_EQ(shortened("Büroklammer", 4), "Bür…");
    EXPECT_EQ(shortened("Büro", 4), "Büro");
    EXPECT_EQ(shortenedBefore("Spooler-Büro", 4), "…üro");
    EXPECT_EQ(shortenedBefore("Büro", 4), "Büro");
}

TEST(Text, NumbersAndDurationsAreReadable) {
    EXPECT_EQ(grouped(1234567), "1,234,567");
    EXPECT_EQ(grouped(12), "12");
    EXPECT_EQ(durationText(999), "999 ms");
    EXPECT_EQ(durationText(1249), "1.2 s");
    EXPECT_EQ(durationText(1250), "1.3 s");
    EXPECT_EQ(durationText(125000), "2 min 5 s");
    EXPECT_EQ(durationText(3599990), "1 h 0 min");
    EXPECT_EQ(durationText(3720000), "1 h 2 min");
}

}  // namespace
}  // namespace vok::log
