#include "support/inline_text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vok::test {
namespace {

using Text = InlineText<4>;

void expectText(const Text& text, std::string_view expected) {
    EXPECT_EQ(std::string_view(text), expected);
    EXPECT_EQ(text.size(), expected.size());
    EXPECT_EQ(std::string(text.c_str()), expected);
}

// Whether the characters are kept inside the object.
bool isInside(const Text& text) {
    const char* const begin = reinterpret_cast<const char*>(&text);
    return text.c_str() >= begin && text.c_str() < begin + sizeof text;
}

TEST(InlineText, IsEmptyAtFirst) {
    expectText(Text(), "");
    expectText(Text{"", ""}, "");
}

TEST(InlineText, KeepsTheUsualInsideAndTheLongerOutside) {
    Text text{"ab", "cd"};
    expectText(text, "abcd");
    EXPECT_TRUE(isInside(text));
    text.append("");
    EXPECT_TRUE(isInside(text));
    text.append("e");
    expectText(text, "abcde");
    text.append(3, ' ').append("f");
    expectText(text, "abcde   f");
}

TEST(InlineText, OneTooLongFromTheBeginning) {
    const std::string longer(100, 'x');
    expectText(Text{longer}, longer);
    Text text{"a"};
    text.append(longer);
    expectText(text, "a" + longer);
}

TEST(InlineText, Repeats) {
    Text text;
    text.append(4, '-');
    expectText(text, "----");
    EXPECT_TRUE(isInside(text));
    text.append(0, '+').append(1, '+');
    expectText(text, "----+");
}

TEST(InlineText, ACopyStandsOnItsOwn) {
    Text text{"abc"};
    Text copy(text);
    copy.append("d");
    expectText(text, "abc");
    expectText(copy, "abcd");
    text.append("and more");
    expectText(Text(text), "abcand more");
}

}  // namespace
}  // namespace vok::test
