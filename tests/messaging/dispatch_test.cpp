// The exports that forward events, linked into the test program: what each does in which order.
#include <gtest/gtest.h>
#include <vok/vok.h>

#include <algorithm>
#include <string>

#include "support/library_module.h"
#include "support/own_process.h"
#include "support/simulated_machine.h"

namespace vok::test {
namespace {

const OwnProcess ownProcess{
    "Dispatch.", "calls that find no configuration library change the count of set-ups for good"};

constexpr BYTE block[VOK_NEMB_BLOCK_SIZE] = {};

class Dispatch : public ::testing::Test {
  protected:
    Dispatch() { setLibraryModule(static_cast<HMODULE>(handleOf(Kind::module, 7))); }
    ~Dispatch() override { setLibraryModule(nullptr); }

    // The names of the senders in the log since the last time.
    Lines senders(const System& system) {
        Lines found;
        const Lines lines = system.logLines();
        for (; seen_ < lines.size(); ++seen_) {
            const size_t at = lines[seen_].find("+Send");
            if (at != std::string::npos) {
                found.push_back(lines[seen_].substr(at + 1));
            }
        }
        return found;
    }

  private:
    size_t seen_ = 0;
};

TEST_F(Dispatch, EachCallAsksForTheFamilyAfresh) {
    SimulatedMachine machine;
    System& system = machine.system;
    system.startLog();
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        system.os = os;
        system.calls.clear();
        VKDATA record{};
        EXPECT_EQ(VOKSendDralMsg(block, SM_STARTPAGE, &record), os.is9x() ? YESPRINT : NOPRINT);
        EXPECT_EQ(VOKSendNembMsg(block, SM_STARTPAGE, &record), os.is9x() ? YESPRINT : NOPRINT);
        EXPECT_EQ(senders(system), os.is9x() ? (Lines{"SendDRALMsg9X", "SendNEMBMsg9X"})
                                             : (Lines{"SendDRALMsgXP", "SendNEMBMsgXP"}));
        EXPECT_EQ(system.calls.linesOf("GetVersionExA"), Lines(2, "GetVersionExA(148) = 1"));
    }
}

// A version that can't be read is an early NT's, also when the system is a 9x one.
TEST_F(Dispatch, AVersionThatCannotBeReadTakesTheNtWay) {
    SimulatedMachine machine(os::win98);
    machine.system.startLog();
    machine.system.faults.fail("GetVersionExA", 0, 1, Lasting::forEver);
    VKDATA record{};
    EXPECT_EQ(VOKSendDralMsg(block, SM_OPENJOB, &record), NOPRINT);
    EXPECT_EQ(VOKSendNembMsg(block, SM_OPENJOB, &record), NOPRINT);
    EXPECT_EQ(senders(machine.system), (Lines{"SendDRALMsgXP", "SendNEMBMsgXP"}));
}

// The frame comes first, its configuration library before the family, the family before the work.
TEST_F(Dispatch, FrameThenFamilyThenWork) {
    SimulatedMachine machine;
    machine.system.addPrinter("Office");
    VKDATA record{};
    record.hDRAL = machine.system.desktop.add("any", "any", {7}).handle;
    machine.system.calls.clear();
    EXPECT_EQ(VOKSendDralMsg(block, SM_STARTPAGE, &record), 7);
    const Lines names = machine.system.calls.names();
    const auto at = [&](const char* name) { return std::find(names.begin(), names.end(), name); };
    EXPECT_EQ(names.front(), "GetModuleFileNameA");
    EXPECT_LT(at("LoadLibraryA"), at("GetVersionExA"));
    EXPECT_LT(at("GetVersionExA"), at("SendMessageA"));
    EXPECT_EQ(names.back(), "SendMessageA");
}

TEST_F(Dispatch, ALaunchTakesItsTimeFirstOfAll) {
    SimulatedMachine machine;
    machine.system.calls.recordAlso("GetTickCount");
    VKDATA record{};
    EXPECT_EQ(VOKLaunchXFiles("Office", "LPT1:", &record), FALSE);
    EXPECT_EQ(machine.system.calls.names().front(), "GetTickCount");
}

TEST_F(Dispatch, WideRepliesAreReturnedTruncated) {
    SimulatedMachine machine;
    VKDATA record{};
    record.hDRAL = machine.system.desktop.add("any", "any", {0x500000007}).handle;
    record.hNEMB = machine.system.desktop.add("any", "any", {0x1FFFFFFFF}).handle;
    EXPECT_EQ(VOKSendDralMsg(block, SM_STARTPAGE, &record), 7);
    EXPECT_EQ(VOKSendNembMsg(block, SM_STARTPAGE, &record), -1);
}

TEST_F(Dispatch, GettersOfNoRecordTouchNothing) {
    const SimulatedMachine machine;
    EXPECT_EQ(VOKGetDral(nullptr), nullptr);
    EXPECT_EQ(VOKGetNemb(nullptr), nullptr);
    EXPECT_EQ(machine.system.calls.lines(), Lines());
}

}  // namespace
}  // namespace vok::test
