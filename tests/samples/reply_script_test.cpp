#include "companion/reply_script.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace vok::sample {
namespace {

using Kind = ScriptedReply::Kind;

TEST(ReplyScriptTest, ANumberIsTheAnswer) {
    for (const LONG number : {0L, 1L, 2L, 7L, -1L, LONG_MAX, LONG_MIN}) {
        const auto reply = parseReply(std::to_string(number));
        ASSERT_TRUE(reply) << number;
        EXPECT_EQ(reply->kind, Kind::Answer);
        EXPECT_EQ(reply->reply, number);
        EXPECT_EQ(reply->delay, 0U);
        EXPECT_EQ(reply->bytes, 4U);
    }
}

TEST(ReplyScriptTest, LateHasADelayAndMayHaveAnAnswer) {
    EXPECT_EQ(parseReply("late:500")->delay, 500U);
    EXPECT_EQ(parseReply("late:500")->reply, 1);
    EXPECT_EQ(parseReply("late:20:2")->delay, 20U);
    EXPECT_EQ(parseReply("late:20:2")->reply, 2);
}

TEST(ReplyScriptTest, ShortHasTheBytesAndMayHaveAnAnswer) {
    EXPECT_EQ(parseReply("short:2")->bytes, 2U);
    EXPECT_EQ(parseReply("short:2")->reply, 1);
    EXPECT_EQ(parseReply("short:0:7")->bytes, 0U);
    EXPECT_EQ(parseReply("short:3:7")->reply, 7);
}

TEST(ReplyScriptTest, NeverAndDie) {
    EXPECT_EQ(parseReply("never")->kind, Kind::Never);
    EXPECT_EQ(parseReply("die")->kind, Kind::Die);
}

TEST(ReplyScriptTest, TheSumIsTakenFromTheBlock) {
    EXPECT_TRUE(parseReply("sum")->sum);
    EXPECT_FALSE(parseReply("1")->sum);
}

TEST(ReplyScriptTest, AnythingElseIsNoReply) {
    for (const char* text :
         {"", " ", "x", "1x", "1 ", "late", "late:", "late:x", "late:-1", "late:1:", "late:1:2:3",
          "short:5", "short:-1", "Never", "die:1", "sum:1", "99999999999"})
        EXPECT_FALSE(parseReply(text)) << text;
}

TEST(ReplyScriptTest, WithoutAScriptTheAnswerIsYes) {
    EXPECT_EQ(replyAt("", 0)->reply, 1);
    EXPECT_EQ(replyAt("", 99)->reply, 1);
}

TEST(ReplyScriptTest, TheRepliesComeInOrderAndTheLastIsRepeated) {
    const std::string script = "1,2,0";
    EXPECT_EQ(replyAt(script, 0)->reply, 1);
    EXPECT_EQ(replyAt(script, 1)->reply, 2);
    EXPECT_EQ(replyAt(script, 2)->reply, 0);
    EXPECT_EQ(replyAt(script, 3)->reply, 0);
}

TEST(ReplyScriptTest, AWrongReplyIsSeenWhereItStands) {
    EXPECT_TRUE(replyAt("1,oops,2", 0));
    EXPECT_FALSE(replyAt("1,oops,2", 1));
    EXPECT_FALSE(replyAt("1,", 1));
}

}  // namespace
}  // namespace vok::sample
