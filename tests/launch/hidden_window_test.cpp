#include "launch/hidden_window.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "sim/guarded_bytes.h"

namespace vok::test {
namespace {

TEST(HiddenWindow, IsNamedByTheRecordsSuffix) {
    VKDATA record{};
    EXPECT_STREQ(hiddenWindowName(record).text(), "DRAL Hidden Window-");
    std::strcpy(record.dralTitleSuffix, "Office 7");
    EXPECT_STREQ(hiddenWindowName(record).text(), "DRAL Hidden Window-Office 7");
}

TEST(HiddenWindow, LongestSuffixFits) {
    VKDATA record{};
    std::memset(record.dralTitleSuffix, 's', VOK_TITLE_SUFFIX_SIZE - 1);
    EXPECT_EQ(hiddenWindowName(record).text(), "DRAL Hidden Window-" + std::string(240, 's'));
}

// The record stands right before a page that can't be read, as near as its alignment lets it.
TEST(HiddenWindow, SuffixWithoutNulIsReadToItsEndAndCut) {
    VKDATA record;
    std::memset(&record, 's', sizeof record);
    const GuardedBytes place(&record, sizeof record, GuardedBytes::Use::readOnly);
    const auto* guarded = static_cast<const VKDATA*>(place.data());
    EXPECT_EQ(hiddenWindowName(*guarded).text(), "DRAL Hidden Window-" + std::string(240, 's'));
}

}  // namespace
}  // namespace vok::test
