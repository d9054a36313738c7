#include "launch/printer_lookup.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/library_module.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

const std::string drivers = R"(C:\WINDOWS\system32\spool\drivers\x64)";

// Six characters of which the prefix may take four.
const std::string untouched = "xxxxxx";

class ModulePrefix : public ::testing::Test {
  protected:
    ModulePrefix() { setLibraryModule(static_cast<HMODULE>(handleOf(Kind::module, 7))); }
    ~ModulePrefix() override { setLibraryModule(nullptr); }
};

TEST_F(ModulePrefix, IsTheFirstFourCharactersOfTheFileName) {
    const struct {
        const char* path;
        const char* shown;  // from the last backslash on; null: there is none
        std::string prefix;
    } cases[] = {
        {R"(C:\x64\DEMOvok.dll)", R"(\DEMOvok.dll)", "DEMO"},
        {R"(C:\x64\abcd)", R"(\abcd)", "abcd"},
        {R"(C:\x64\abc)", R"(\abc)", std::string("abc\0", 4)},
        {R"(C:\x64\a)", R"(\a)", std::string("a\0\0\0", 4)},
        {R"(C:\x64\)", R"(\)", std::string(4, '\0')},
        {R"(\ABCDEF)", R"(\ABCDEF)", "ABCD"},
        {"ABCDvok.dll", nullptr, "ABCD"},
        {"abc", nullptr, std::string("abc\0", 4)},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.path);
        LoggedMachine machine;
        machine.system.modules.libraryPath = one.path;
        std::string destination = untouched;
        EXPECT_EQ(GetModuleNamePrefix(destination.data()), 1);
        EXPECT_EQ(destination, one.prefix + "xx");
        expectMessages(machine.system,
                       {std::string("The module name = ") + one.path,
                        one.shown ? std::string("Got The File Name! File Name = ") + one.shown
                                  : "Did NOT get File Name"});
    }
}

TEST_F(ModulePrefix, AsksForTheLibrarysOwnNameAtMost260Bytes) {
    const SimulatedMachine machine;
    char destination[4];
    GetModuleNamePrefix(destination);
    EXPECT_EQ(machine.system.calls.lines(),
              Lines{"GetModuleFileNameA(library, out, 260) = 50 -> \"" +
                    machine.system.modules.libraryPath + "\""});
}

TEST_F(ModulePrefix, WithoutADestinationNothingIsAsked) {
    const SimulatedMachine machine;
    EXPECT_EQ(GetModuleNamePrefix(nullptr), 0);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

TEST_F(ModulePrefix, WithoutAModuleNothingIsAsked) {
    setLibraryModule(nullptr);
    const SimulatedMachine machine;
    std::string destination = untouched;
    EXPECT_EQ(GetModuleNamePrefix(destination.data()), 0);
    EXPECT_EQ(destination, untouched);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
    EXPECT_STREQ(modelPrefix().text(), "");
}

TEST_F(ModulePrefix, AFailingCallLeavesTheDestinationAlone) {
    LoggedMachine machine;
    machine.system.faults.fail("GetModuleFileNameA", 0, 1, Lasting::forEver);
    std::string destination = untouched;
    EXPECT_EQ(GetModuleNamePrefix(destination.data()), 0);
    EXPECT_EQ(destination, untouched);
    EXPECT_STREQ(modelPrefix().text(), "");
    expectMessages(machine.system, {});
}

TEST_F(ModulePrefix, APathThatTheSystemLeavesWithoutAnEndIsCut) {
    LoggedMachine machine;
    machine.system.modules.libraryPath = R"(C:\)" + std::string(300, 'y');
    machine.system.modules.cutPathsHaveNoEnd = true;
    std::string destination = untouched;
    EXPECT_EQ(GetModuleNamePrefix(destination.data()), 1);
    EXPECT_EQ(destination, "yyyyxx");
    const std::string name(256, 'y');
    expectMessages(machine.system, {R"(The module name = C:\)" + name,
                                    R"(Got The File Name! File Name = \)" + name});
}

TEST_F(ModulePrefix, AsATextEndsAfterFourCharacters) {
    SimulatedMachine machine;
    EXPECT_STREQ(modelPrefix().text(), "DEMO");
    machine.system.modules.libraryPath = R"(C:\abc)";
    EXPECT_STREQ(modelPrefix().text(), "abc");
}

TEST(NembWindowNames, AreMadeFromThePrintersOwnPrefix) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office", "ABCD");
    NameBuffer className;
    std::string title;
    EXPECT_EQ(GetNembWindowNames("Office", &className, &title), 1);
    EXPECT_STREQ(className.text(), "ABCDNEMB - ");
    EXPECT_EQ(title, "ABCDNEMB - Office");
    EXPECT_EQ(
        machine.system.calls.lines(),
        (Lines{
            R"(OpenPrinterA("Office", out, null) = 1 -> printer#1)",
            R"(GetPrinterDataA(printer#1, "Printer Prefix", null, out, 260, out) = 0 -> "ABCD")"}));
    expectNoLeaks(machine.system, {"printer#1"});
}

TEST(NembWindowNames, WithoutRoomForThemNothingIsAsked) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office");
    NameBuffer className;
    std::string title = "before";
    EXPECT_EQ(GetNembWindowNames("Office", nullptr, &title), 0);
    EXPECT_EQ(GetNembWindowNames("Office", &className, nullptr), 0);
    EXPECT_EQ(GetNembWindowNames("Office", nullptr, nullptr), 0);
    EXPECT_EQ(title, "before");
    EXPECT_STREQ(className.text(), "");
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

TEST(NembWindowNames, AStatusOtherThanZeroMakesNone) {
    for (size_t way = 0; way < failureCount("GetPrinterDataA"); ++way) {
        SimulatedMachine machine;
        machine.system.addPrinter("Office");
        machine.system.faults.fail("GetPrinterDataA", way);
        NameBuffer className;
        std::string title = "before";
        EXPECT_EQ(GetNembWindowNames("Office", &className, &title), 0);
        EXPECT_STREQ(className.text(), "");
        EXPECT_EQ(title, "before");
        expectNoLeaks(machine.system, {"printer#1"});
    }
}

// Whatever a failing call leaves in the class's buffer, it ends.
TEST(NembWindowNames, AFailureThatFillsTheBufferLeavesATextThatEnds) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office");
    machine.system.faults.fail("GetPrinterDataA");
    NameBuffer className;
    std::memset(className.data(), 'x', NameBuffer::size);
    std::string title;
    EXPECT_EQ(GetNembWindowNames("Office", &className, &title), 0);
    EXPECT_EQ(className.data()[NameBuffer::size - 1], '\0');
}

// The printer's handle is null then, and the data is asked for all the same.
TEST(NembWindowNames, APrinterThatCannotBeOpenedHasNone) {
    const SimulatedMachine machine;
    NameBuffer className;
    std::string title;
    EXPECT_EQ(GetNembWindowNames("nowhere", &className, &title), 0);
    EXPECT_EQ(machine.system.calls.lines(),
              (Lines{R"(OpenPrinterA("nowhere", out, null) = 0 (error 1801))",
                     R"(GetPrinterDataA(null, "Printer Prefix", null, out, 260, out) = 6)"}));
}

TEST(NembWindowNames, DataWithoutNulIsCutAndTheTitleIsNot) {
    for (const size_t size : {252u, 253u, 259u, 260u}) {
        SCOPED_TRACE(size);
        SimulatedMachine machine;
        machine.system.spooler.setData("Office", "Printer Prefix",
                                       {REG_BINARY, std::string(size, 'x')});
        NameBuffer className;
        std::string title;
        EXPECT_EQ(GetNembWindowNames("Office", &className, &title), 1);
        const std::string expected = (std::string(size, 'x') + "NEMB - ").substr(0, 259);
        EXPECT_EQ(className.text(), size == 260 ? std::string(259, 'x') : expected);
        EXPECT_EQ(title, className.text() + std::string("Office"));
    }
}

TEST(NembWindowNames, ANameThatIsNullCountsAsEmpty) {
    SimulatedMachine machine;
    machine.system.addPrinter("");
    NameBuffer className;
    std::string title;
    EXPECT_EQ(GetNembWindowNames(nullptr, &className, &title), 1);
    EXPECT_EQ(title, "DEMONEMB - ");
}

TEST(PrinterDriverDir, EndsInTheDriverVersionsDirectory) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        const SimulatedMachine machine(os);
        char buffer[260];
        EXPECT_EQ(GetPrinterDriverDir(buffer, sizeof buffer), 1);
        EXPECT_EQ(buffer, drivers + (os.is9x() ? R"(\)" : os.major == 4 ? R"(\2\)" : R"(\3\)"));
        EXPECT_EQ(machine.system.calls.lines(),
                  (Lines{"GetPrinterDriverDirectoryA(null, null, 1, out, 260, out) = 1 -> \"" +
                             drivers + "\"",
                         "GetVersionExA(148) = 1"}));
    }
}

TEST(PrinterDriverDir, WithoutABufferNothingIsAsked) {
    const SimulatedMachine machine;
    std::string buffer = untouched;
    EXPECT_EQ(GetPrinterDriverDir(nullptr, 260), 0);
    EXPECT_EQ(GetPrinterDriverDir(buffer.data(), 0), 0);
    EXPECT_EQ(GetPrinterDriverDir(nullptr, 0), 0);
    EXPECT_EQ(buffer, untouched);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

TEST(PrinterDriverDir, TenBytesAreTooFew) {
    const SimulatedMachine machine;
    std::string buffer(12, 'x');
    EXPECT_EQ(GetPrinterDriverDir(buffer.data(), 10), 0);
    EXPECT_EQ(buffer.substr(10), "xx");
    EXPECT_EQ(machine.system.calls.count("GetVersionExA"), 0U);
}

// What fits of the version's directory is appended; the last byte is always a NUL.
TEST(PrinterDriverDir, ABufferThatTheDirectoryFills) {
    const SimulatedMachine machine;
    const size_t exact = drivers.size() + 1;
    const char* appended[] = {"", R"(\)", R"(\3)", R"(\3\)", R"(\3\)"};
    for (size_t more = 0; more < std::size(appended); ++more) {
        SCOPED_TRACE(more);
        std::string buffer(exact + more + 2, 'x');
        EXPECT_EQ(GetPrinterDriverDir(buffer.data(), static_cast<DWORD>(exact + more)), 1);
        EXPECT_EQ(buffer.c_str(), drivers + appended[more]);
        EXPECT_EQ(buffer.substr(exact + more), "xx");
    }
    std::string buffer(exact, 'x');
    EXPECT_EQ(GetPrinterDriverDir(buffer.data(), static_cast<DWORD>(exact - 1)), 0);
}

// Only the size that the call reports as needed is looked at.
TEST(PrinterDriverDir, AFailureThatNeedsLittleLeavesAnEmptyDirectory) {
    SimulatedMachine machine;
    machine.system.spooler.driverDirectoryError = RPC_S_SERVER_UNAVAILABLE;
    char buffer[260] = "before";
    EXPECT_EQ(GetPrinterDriverDir(buffer, sizeof buffer), 1);
    EXPECT_STREQ(buffer, R"(\3\)");
}

TEST(PrinterHold, IsClosedAtItsEnd) {
    LoggedMachine machine;
    machine.system.addPrinter("Office");
    {
        const PrinterHold printer("Office");
        EXPECT_TRUE(printer.isOpen());
        EXPECT_EQ(machine.system.handles.countOpen(Kind::printer), 1U);
    }
    expectCallsOf(machine.system, "ClosePrinter", {"ClosePrinter(printer#1) = 1"});
    expectMessages(machine.system, {});
}

TEST(PrinterHold, CanBeLeftOpen) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office");
    {
        PrinterHold printer("Office");
        printer.keepOpen();
    }
    expectCallsOf(machine.system, "ClosePrinter", {});
    expectNoLeaks(machine.system, {"printer#1"});
}

TEST(PrinterHold, OneThatCannotBeOpenedIsLoggedAndNotClosed) {
    const LoggedMachine machine;
    {
        const PrinterHold printer("nowhere");
        EXPECT_FALSE(printer.isOpen());
    }
    expectCallsOf(machine.system, "ClosePrinter", {});
    expectMessages(machine.system, {"Could not open the Printer. Exiting now..."});
}

}  // namespace
}  // namespace vok::test
