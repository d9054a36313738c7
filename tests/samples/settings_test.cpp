#include "common/settings.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace vok::sample {
namespace {

/// A key of the test's own below the base key.
class SettingsTest : public testing::Test {
  protected:
    const std::string key_ = "\\SettingsTest" + std::to_string(GetCurrentProcessId());

    void TearDown() override { RegDeleteTreeA(HKEY_LOCAL_MACHINE, (baseKey() + key_).c_str()); }
};

TEST_F(SettingsTest, WhatIsWrittenIsRead) {
    ASSERT_EQ(writeSetting(key_, "Name", std::string("a text")), ERROR_SUCCESS);
    EXPECT_EQ(readSetting(key_, "Name"), "a text");
}

TEST_F(SettingsTest, WhatIsMissingIsEmpty) {
    EXPECT_EQ(readSetting(key_, "Name"), "");
    ASSERT_EQ(writeSetting(key_, "Other", std::string("x")), ERROR_SUCCESS);
    EXPECT_EQ(readSetting(key_, "Name"), "");
}

TEST_F(SettingsTest, ANumberIsNoText) {
    ASSERT_EQ(writeSetting(key_, "Name", 0x41414141UL), ERROR_SUCCESS);
    EXPECT_EQ(readSetting(key_, "Name"), "");
}

TEST_F(SettingsTest, ATextThatIsTooLongIsNotReadHalf) {
    ASSERT_EQ(writeSetting(key_, "Name", std::string(2000, 'x')), ERROR_SUCCESS);
    EXPECT_EQ(readSetting(key_, "Name"), "");
}

TEST_F(SettingsTest, EveryModelHasAKeyOfItsOwn) {
    EXPECT_EQ(baseKey(), "SOFTWARE\\" VOK_MODEL_PREFIX "\\Printer");
    serveModel("ABCD");
    const std::string other = baseKey();
    serveModel(VOK_MODEL_PREFIX);
    EXPECT_EQ(other, "SOFTWARE\\ABCD\\Printer");
}

}  // namespace
}  // namespace vok::sample
