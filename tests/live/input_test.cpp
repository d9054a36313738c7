// Input that no caller should give, to the library as it ships among real processes: never a crash,
// never a byte read or written outside of what was handed in.
#include <gmock/gmock.h>

#include <bit>
#include <cstring>
#include <string>
#include <vector>

#include "common/machine.h"
#include "common/settings.h"
#include "live_test.h"

namespace vok::test {
namespace {

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;

/// Memory whose last byte is the last that may be touched.
class GuardedEnd {
  public:
    explicit GuardedEnd(std::size_t size)
        : pages_(static_cast<char*>(
              VirtualAlloc(nullptr, 2 * page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))),
          bytes_(pages_ + page - size) {
        DWORD before = 0;
        VirtualProtect(pages_ + page, page, PAGE_NOACCESS, &before);
    }
    ~GuardedEnd() { VirtualFree(pages_, 0, MEM_RELEASE); }
    GuardedEnd(const GuardedEnd&) = delete;
    GuardedEnd& operator=(const GuardedEnd&) = delete;

    [[nodiscard]] char* bytes() const { return bytes_; }

  private:
    static constexpr std::size_t page = 4096;
    char* pages_;
    char* bytes_;
};

class LiveInputTest : public LiveRouteTest {
  protected:
    DWORD sendEx(const char* name, HANDLE companion, DWORD length) {
        const auto send = std::bit_cast<VOKSendMsgExFn>(
            GetProcAddress(module(GetParam()), VOK_EXPORT_SEND_MSG_EX));
        const BYTE data = 0x41;
        return send(name, companion, byPipe() ? 1 : 0, WM_USER + 1, &data, length);
    }
};

TEST_P(LiveInputTest, NamesOfAnyLengthStartNothingAndAreLoggedWhole) {
    for (const std::size_t length : {0U, 259U, 260U, 1000U}) {
        const std::string name(length, 'n');
        sample::JobRecord record("x");
        EXPECT_EQ(library().launch(name.c_str(), name.c_str(), record.get()), FALSE) << length;
        EXPECT_EQ(record->hNEMB, nullptr);
        expectLogged(
            {"FriendlyName = " + name + ", PortName = " + name, "rc = FALSE from VOKLaunchXFiles"});
    }
    EXPECT_TRUE(machine().companions("DRAL").empty());
    EXPECT_TRUE(machine().companions("NEMB").empty());
}

TEST_P(LiveInputTest, NullNamesAreEmptyOnes) {
    sample::JobRecord record("x");
    // Without a name the system opens the print server itself, so companions may be started.
    library().launch(nullptr, nullptr, record.get());
    expectLogged({"FriendlyName = , PortName = "});
}

TEST_P(LiveInputTest, ThePrinterWithTheLongestNameIsServed) {
    const std::string printer = machine().addPrinter(std::string(120, 'p'));
    LiveJob job(library(), printer, 1);
    ASSERT_TRUE(job.reach());
    EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(account().size(), 2U);
}

TEST_P(LiveInputTest, AnyNameMayBeSentWithAMessage) {
    for (const std::size_t length : {0U, 259U, 260U, 1000U}) {
        const std::string name(length, 'n');
        EXPECT_EQ(sendEx(name.c_str(), nullptr, 1), 0U);
        EXPECT_THAT(readLines(machine().logPath()),
                    Contains(HasSubstr("FN=" + name + " hXfile=0 ")));
    }
    EXPECT_EQ(sendEx(nullptr, nullptr, 1), 0U);
    EXPECT_EQ(sendEx("n", GetCurrentProcess(), 0), 0U);
    EXPECT_EQ(sendEx("n", std::bit_cast<HANDLE>(0x123456789ULL), 1), 0U);
}

TEST_P(LiveInputTest, ASuffixWithoutAnEndIsReadToItsEndOnly) {
    // Behind the suffix the record has three bytes that belong to nobody.
    const GuardedEnd memory(sizeof(VKDATA));
    auto* record = reinterpret_cast<VKDATA*>(memory.bytes());
    std::memset(record, 0, sizeof *record);
    std::memset(record->dralTitleSuffix, 's', sizeof record->dralTitleSuffix);
    const std::string printer = machine().addPrinter("Suffix");
    library().launch(printer.c_str(), "LPT1:", record);
    sample::DralBlock block{SM_OPENJOB, 1, 0, {}};
    if (!byPipe()) {
        record->hDRAL = nullptr;
        EXPECT_EQ(library().sendDral(&block, SM_OPENJOB, record),
                  sample::is9x() ? LONG{YESPRINT} : LONG{NOPRINT});
    }
    EXPECT_EQ(record->dralTitleSuffix[VOK_TITLE_SUFFIX_SIZE - 1], 's');
}

TEST_P(LiveInputTest, BlocksAreReadToTheirEndOnly) {
    const std::string printer = machine().addPrinter("Blocks");
    LiveJob job(library(), printer, 1);
    ASSERT_TRUE(job.reach());
    const GuardedEnd dral(VOK_DRAL_BLOCK_SIZE);
    const GuardedEnd nemb(VOK_NEMB_BLOCK_SIZE);
    std::memset(dral.bytes(), 1, VOK_DRAL_BLOCK_SIZE);
    std::memset(nemb.bytes(), 0, VOK_NEMB_BLOCK_SIZE);
    sample::copyText(nemb.bytes(), VOK_NAME_SIZE, printer);
    EXPECT_EQ(library().sendDral(dral.bytes(), SM_OPENJOB, job.record.get()), YESPRINT);
    EXPECT_EQ(library().sendNemb(nemb.bytes(), SM_OPENJOB, job.record.get()), YESPRINT);
}

TEST_P(LiveInputTest, ANullRecordIsAnswered) {
    LiveJob job(library(), "nobody", 1);
    sample::NembBlock block{};
    EXPECT_EQ(library().sendDral(&block, SM_OPENJOB, nullptr), YESPRINT);
    EXPECT_EQ(library().sendNemb(&block, SM_OPENJOB, nullptr), YESPRINT);
    EXPECT_EQ(library().launch("nobody", "LPT1:", nullptr), FALSE);
}

TEST_P(LiveInputTest, OptionsOfAWrongTypeAreReportedAndTheJobGoesOn) {
    for (const char* option : {"startLog", "CommonLog", "All", "VOK"})
        EXPECT_EQ(sample::writeSetting("\\XFiles\\Logger", option, std::string("a text")),
                  ERROR_SUCCESS);
    const std::string printer = machine().addPrinter("Options");
    LiveJob job(library(), printer, 1);
    ASSERT_TRUE(job.reach());
    EXPECT_EQ(job.dral(SM_OPENJOB), YESPRINT);
    EXPECT_EQ(job.nemb(SM_OPENJOB), YESPRINT);
    const std::vector<std::string> lines = readLines(machine().logPath());
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_THAT(line, HasSubstr(" RegistryKey64() exception error=234"));
}

TEST_P(LiveInputTest, APrefixOfAWrongTypeStartsNoCompanionTwice) {
    const std::string printer = machine().addPrinter("Prefix");
    const std::string key =
        "System\\CurrentControlSet\\control\\Print\\Printers\\" + printer + "\\PrinterDriverData";
    const DWORD number = 0x41414141;
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), VOK_PRINTER_PREFIX_VALUE, REG_DWORD,
                              &number, sizeof number),
              ERROR_SUCCESS);
    LiveJob job(library(), printer, 1);
    // The four bytes are taken for a prefix, of which there is no program.
    const bool usesPrinterData = !byPipe() && !sample::is9x();
    if (usesPrinterData) {
        EXPECT_EQ(job.launch(), FALSE);
        EXPECT_EQ(job.launch(), FALSE);
        EXPECT_TRUE(machine().companions("NEMB").empty());
    } else {
        EXPECT_TRUE(job.reach());
    }
}

INSTANTIATE_TEST_SUITE_P(By, LiveInputTest, testing::ValuesIn(liveRoutes()),
                         [](const auto& test) { return toText(test.param); });

}  // namespace
}  // namespace vok::test
