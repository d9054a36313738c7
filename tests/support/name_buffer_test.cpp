#include "support/name_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vok::test {
namespace {

TEST(NameBuffer, KeepsUpTo259Characters) {
    for (const std::size_t length : {0U, 1U, 258U, 259U, 260U, 261U, 1000U}) {
        const std::string name(length, 'n');
        const NameBuffer buffer(name.c_str());
        EXPECT_EQ(buffer.text(), name.substr(0, 259)) << length;
    }
}

TEST(NameBuffer, AppendingCutsAtTheEndWhateverWasThere) {
    NameBuffer buffer(std::string(258, 'a').c_str());
    buffer << "bcd"
           << "e";
    EXPECT_EQ(buffer.text(), std::string(258, 'a') + "b");
    NameBuffer joined("left ");
    joined << NameBuffer("right");
    EXPECT_STREQ(joined.text(), "left right");
}

TEST(NameBuffer, NullCountsAsEmpty) {
    NameBuffer buffer(nullptr);
    buffer.append(nullptr) << static_cast<const char*>(nullptr);
    EXPECT_STREQ(buffer.text(), "");
}

TEST(NameBuffer, ReadsNoMoreThanTheCapacityOfATextWithoutEnd) {
    const char unterminated[] = {'a', 'b', 'c', 'd'};
    NameBuffer buffer("x");
    buffer.append(unterminated, 3);
    EXPECT_STREQ(buffer.text(), "xabc");
    buffer.append("yz", 100);
    EXPECT_STREQ(buffer.text(), "xabcyz");
}

TEST(NameBuffer, AFullBufferThatTheSystemLeftOpenIsEnded) {
    NameBuffer buffer;
    std::memset(buffer.data(), 'Z', NameBuffer::size);
    buffer.terminate();
    EXPECT_EQ(std::strlen(buffer.text()), 259U);
    buffer << "more";
    EXPECT_EQ(std::strlen(buffer.text()), 259U);
}

}  // namespace
}  // namespace vok::test
