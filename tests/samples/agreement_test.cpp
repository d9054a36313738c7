#include "common/agreement.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace vok::sample {
namespace {

TEST(AgreementTest, TheSuffixIsTheNameAndAWindowClassHasRoomForIt) {
    EXPECT_EQ(titleSuffix("Office"), "Office");
    EXPECT_EQ(titleSuffix(""), "");
    const std::string longest = VOK_DRAL_HIDDEN + titleSuffix(std::string(300, 'x'));
    EXPECT_EQ(longest.size(), 255U);
}

TEST(AgreementTest, EventsHaveNamesAndStrangersNumbers) {
    EXPECT_EQ(eventName(SM_OPENJOB), "OPENJOB");
    EXPECT_EQ(eventName(SM_CLOSEJOB), "CLOSEJOB");
    EXPECT_EQ(eventName(SM_STARTPAGE), "STARTPAGE");
    EXPECT_EQ(eventName(SM_ENDPAGE), "ENDPAGE");
    EXPECT_EQ(eventName(SM_CANCELJOB), "CANCELJOB");
    EXPECT_EQ(eventName(1130), "1130");
}

TEST(AgreementTest, RepliesHaveNamesAndOthersNumbers) {
    EXPECT_EQ(replyName(NOPRINT), "NOPRINT");
    EXPECT_EQ(replyName(YESPRINT), "YESPRINT");
    EXPECT_EQ(replyName(WAITPRINT), "WAITPRINT");
    EXPECT_EQ(replyName(-1), "-1");
}

TEST(AgreementTest, ACopiedTextKeepsWithinItsField) {
    std::array<char, 5> field{'?', '?', '?', '?', '?'};
    copyText(field.data(), 4, "longer");
    EXPECT_STREQ(field.data(), "lon");
    EXPECT_EQ(field[4], '?');
    copyText(field.data(), 4, "");
    EXPECT_STREQ(field.data(), "");
}

TEST(AgreementTest, TheSumTellsBlocksApartByEveryByte) {
    DralBlock block{};
    const LONG empty = blockSum(&block, sizeof block);
    for (std::size_t at = 0; at < sizeof block; ++at) {
        char* byte = reinterpret_cast<char*>(&block) + at;
        *byte = 1;
        EXPECT_NE(blockSum(&block, sizeof block), empty) << "byte " << at;
        *byte = 0;
    }
}

}  // namespace
}  // namespace vok::sample
