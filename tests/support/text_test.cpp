#include "support/text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace vok::test {
namespace {

const void* pointerTo(std::uintptr_t address) {
    return reinterpret_cast<const void*>(address);
}

TEST(ToString, TextsAreCopiedAndNullIsEmpty) {
    EXPECT_EQ(toString(std::string("a text")), "a text");
    EXPECT_EQ(toString("a text"), "a text");
    EXPECT_EQ(toString(static_cast<const char*>(nullptr)), "");
}

TEST(ToString, SignedNumbers) {
    EXPECT_EQ(toString(-1L, 10), "-1");
    EXPECT_EQ(toString(0L, 10), "0");
    EXPECT_EQ(toString(-1L, 16), "ffffffff");
    EXPECT_EQ(toString(std::numeric_limits<long>::min(), 10), "-2147483648");
    EXPECT_EQ(toString(std::numeric_limits<long>::min(), 2), "1" + std::string(31, '0'));
}

TEST(ToString, UnsignedNumbers) {
    EXPECT_EQ(toString(4294967295UL, 16), "ffffffff");
    EXPECT_EQ(toString(4294967295UL, 10), "4294967295");
    EXPECT_EQ(toString(4294967295UL, 2), std::string(32, '1'));
}

TEST(ToString, PointersHaveSixteenUpperCaseDigits) {
    EXPECT_EQ(toString(pointerTo(0xDEADBEEF)), "0x00000000DEADBEEF");
    EXPECT_EQ(toString(pointerTo(0x0123456789ABCDEF)), "0x0123456789ABCDEF");
    EXPECT_EQ(toString(pointerTo(UINTPTR_MAX)), "0xFFFFFFFFFFFFFFFF");
    EXPECT_EQ(toString(static_cast<const void*>(nullptr)), "");
}

TEST(Appending, ReturnsItsLeftOperandAndNullChangesNothing) {
    std::string text = "a";
    EXPECT_EQ(&(text << std::string("b") << "c" << 4294967295UL), &text);
    EXPECT_EQ(text, "abc4294967295");
    EXPECT_EQ(&(text << static_cast<const char*>(nullptr)), &text);
    EXPECT_EQ(text, "abc4294967295");
}

TEST(Joining, ANullLeftOperandCountsAsEmpty) {
    const char* null = nullptr;
    const std::string right = "right";
    EXPECT_EQ(null + right, "right");
    EXPECT_EQ(null + std::string("temporary"), "temporary");
    EXPECT_EQ("left " + right, "left right");
    EXPECT_EQ("left " + std::string("temporary"), "left temporary");
}

}  // namespace
}  // namespace vok::test
