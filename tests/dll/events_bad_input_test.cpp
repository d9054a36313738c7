// The event exports without a record, without a block, and with names of any length.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dll/event_case.h"

namespace vok::test {
namespace {

constexpr DWORD allEvents[] = {1125, 1127, 1135, 1137, 1130};

TEST(EventsWithoutRecord, AreAnsweredYes) {
    onEach(os::all, [](Job& job) {
        const bool is9x = job.system.os.is9x();
        const std::string variant = is9x ? "9X" : "XP";
        for (const DWORD id : allEvents) {
            EXPECT_EQ(job.library.sendDralMsg(job.dralBlock.data(), id, nullptr), 1);
            job.expectNewLines(
                traceOf("VOKSendDralMsg") + traceOf("SendDRALMsg" + variant) +
                Lines{is9x ? "VokData is Null. rc = YESPRINT" : "Invalid VokData or Pipe Handle "});
            EXPECT_EQ(job.library.sendNembMsg(job.nembBlock.data(), id, nullptr), 1);
            job.expectNewLines(traceOf("VOKSendNembMsg") + traceOf("SendNEMBMsg" + variant) +
                               Lines{is9x ? "VokData is Null. rc = YESPRINT"
                                          : "Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"});
        }
    });
}

// By window a null block travels as it is; by pipe nothing is written.
TEST(EventsWithoutBlock, ByWindow) {
    onEach(os::all, [](Job& job) {
        job.record.hDRAL = job.system.desktop.add("any", "any", {7}).handle;
        job.record.hNEMB = job.record.hDRAL;
        EXPECT_EQ(job.library.sendDralMsg(nullptr, SM_STARTPAGE, &job.record), 7);
        EXPECT_EQ(job.library.sendNembMsg(nullptr, SM_STARTPAGE, &job.record), 7);
        expectCallsOf(job.system, "SendMessageA",
                      {"SendMessageA(window#1, 74, 0, copydata{1135, null}) = 7",
                       "SendMessageA(window#1, 74, 0, copydata{1135, null}) = 7"});
    });
}

TEST(EventsWithoutBlock, ByPipe) {
    for (const DWORD id : {1125u, 1127u, 1135u, 1137u}) {
        SCOPED_TRACE(id);
        Job job(os::winXp, Log::off);
        job.record.dralMode = VOK_MODE_PIPE;
        job.record.nembMode = VOK_MODE_PIPE;
        job.record.hDRAL = job.system.pipes.open("dral");
        job.record.hNEMB = job.system.pipes.open("nemb");
        job.record.epDoc = 0x10;
        EXPECT_EQ(job.library.sendNembMsg(nullptr, id, &job.record), id == 1125 ? 0 : 1);
        job.record.epDoc = id == 1125 ? 0 : 0x10;
        EXPECT_EQ(job.library.sendDralMsg(nullptr, id, &job.record), 0);
        EXPECT_EQ(job.system.calls.count("WriteFile"), 0u);
        EXPECT_EQ(job.system.calls.count("ReadFile"), 0u);
    }
}

TEST(EventsWithoutBlock, NembsSearchAsksForNoPrinter) {
    Job job(os::winXp);
    EXPECT_EQ(job.library.sendNembMsg(nullptr, SM_OPENJOB, &job.record), 0);
    expectCallsOf(job.system, "OpenPrinterA", {R"(OpenPrinterA("", out, null) = 0 (error 1801))"});
}

// 241 characters, of which 240 fit behind the title's beginning.
TEST(EventsWithLongNames, SuffixWithoutNul) {
    const GuardedBytes place = recordWithoutNul();
    auto* record = static_cast<VKDATA*>(place.data());
    Job job(os::winXp);
    EXPECT_EQ(job.library.sendDralMsg(job.dralBlock.data(), SM_STARTPAGE, record), 0);
    expectCallsOf(job.system, "FindWindowA",
                  {R"(FindWindowA(null, "DRAL Hidden Window-)" + std::string(240, 's') +
                   R"(") = null (error 2))"});
}

// The printer's name may fill the whole block; NEMB's title isn't cut, its class is.
TEST(EventsWithLongNames, PrinterNameInTheBlock) {
    for (const size_t size : {0u, 259u, 260u, 551u, 552u}) {
        SCOPED_TRACE(size);
        Job job(os::winXp);
        const std::string name(size, 'p');
        job.system.addPrinter(name);
        job.system.greedyBuffers = true;
        const std::string text = name + std::string(VOK_NEMB_BLOCK_SIZE - size, '\0');
        const GuardedBytes block(text.data(), text.size(), GuardedBytes::Use::readOnly);
        EXPECT_EQ(job.library.sendNembMsg(block.data(), SM_OPENJOB, &job.record), 0);
        expectCallsOf(
            job.system, "FindWindowA",
            {R"(FindWindowA("DEMONEMB - ", "DEMONEMB - )" + name + R"(") = null (error 2))"});
    }
}

TEST(EventsWithLongNames, PrinterPrefixThatFillsItsBuffer) {
    for (const size_t size : {253u, 259u, 260u}) {
        SCOPED_TRACE(size);
        Job job(os::win7);
        // `size` characters, without a NUL where that leaves no room for one.
        const std::string prefix(size, 'x');
        job.system.spooler.setData("Office", "Printer Prefix", {REG_SZ, prefix});
        EXPECT_EQ(job.tellNemb(SM_OPENJOB), 0);
        const std::string className = (prefix + "NEMB - ").substr(0, 259);
        expectCallsOf(job.system, "FindWindowA",
                      {R"(FindWindowA(")" + className + R"(", ")" + className +
                       R"(Office") = null (error 2))"});
    }
}

// Blocks that end where memory does are read no further than they are sent.
TEST(EventsWithLongNames, BlocksAreReadToTheirEndOnly) {
    onEach(os::all, [](Job& job) {
        job.record.hDRAL = job.system.desktop.add("any", "any").handle;
        job.record.hNEMB = job.record.hDRAL;
        EXPECT_EQ(job.tellDral(SM_STARTPAGE), 1);
        EXPECT_EQ(job.tellNemb(SM_STARTPAGE), 1);
    });
}

}  // namespace
}  // namespace vok::test
