#include "companion/command_line.h"

#include <gtest/gtest.h>

namespace vok::sample {
namespace {

TEST(CommandLineTest, TheFileNameTellsTheRoleAndTheModel) {
    const auto dral = parseFileName("C:\\windows\\DEMODRAL.EXE");
    ASSERT_TRUE(dral);
    EXPECT_EQ(dral->role, Role::Dral);
    EXPECT_EQ(dral->prefix, "DEMO");
    const auto nemb = parseFileName("ABCDnemb.exe");
    ASSERT_TRUE(nemb);
    EXPECT_EQ(nemb->role, Role::Nemb);
    EXPECT_EQ(nemb->prefix, "ABCD");
}

TEST(CommandLineTest, AnyOtherFileNameIsNoCompanions) {
    for (const char* name :
         {"", "abc", "DRAL.EXE", "DEMODRAL", "DEMODRALX.EXE", "XDEMODRAL.EXE", "DEMO\\setup.exe"})
        EXPECT_FALSE(parseFileName(name)) << name;
}

TEST(CommandLineTest, ThePrintersNameReachesToTheEndOrToTheJobArgument) {
    EXPECT_EQ(parsePrinter("C:\\x\\DEMODRAL.EXE SPLPP /F=Office"), "Office");
    EXPECT_EQ(parsePrinter("C:\\x\\DEMONEMB.EXE SPLPP /F=Office /J=1"), "Office");
}

TEST(CommandLineTest, On9xTheLineHasNoProgramName) {
    EXPECT_EQ(parsePrinter(" SPLPP /F=Office /J=1"), "Office");
}

TEST(CommandLineTest, BlanksAndQuotesBelongToTheName) {
    EXPECT_EQ(parsePrinter("DEMODRAL.EXE SPLPP /F=My \"big\" printer "), "My \"big\" printer ");
    EXPECT_EQ(parsePrinter("a SPLPP /F=x /J=1 y"), "x /J=1 y");
    EXPECT_EQ(parsePrinter("a SPLPP /F="), "");
}

TEST(CommandLineTest, ALineWithoutAPrinterIsNotOurs) {
    EXPECT_FALSE(parsePrinter("DEMODRAL.EXE"));
    EXPECT_FALSE(parsePrinter("DEMODRAL.EXE /F=Office"));
}

}  // namespace
}  // namespace vok::sample
