// Which variant starts which companion, and when the second one is started.
#include "launch/start_companions.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/library_module.h"
#include "support/logged_machine.h"

namespace vok::test {
namespace {

class StartCompanions : public ::testing::Test {
  protected:
    StartCompanions() {
        setLibraryModule(static_cast<HMODULE>(handleOf(Kind::module, 7)));
        std::snprintf(record.dralTitleSuffix, sizeof record.dralTitleSuffix, "%s",
                      companions.suffix.c_str());
    }
    ~StartCompanions() override { setLibraryModule(nullptr); }

    // Whether the log shows that a function was called.
    static bool wasCalled(const System& system, const std::string& function) {
        for (const std::string& line : system.logLines()) {
            if (line.ends_with("+" + function)) {
                return true;
            }
        }
        return false;
    }

    Companions companions;
    VKDATA record{};
};

TEST_F(StartCompanions, EachSystemHasItsVariant) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        LoggedMachine machine(os);
        machine.system.addPrinter("Office");
        companions.runDral(machine.system);
        companions.runNemb(machine.system);
        EXPECT_TRUE(startCompanions("Office", "LPT1:", record));
        EXPECT_EQ(wasCalled(machine.system, "StartDRALXP"), os.isNt());
        EXPECT_EQ(wasCalled(machine.system, "StartNEMBXP"), os.isNt());
        EXPECT_EQ(wasCalled(machine.system, "StartNEMB9X"), os.is9x());
    }
}

// The family is asked for afresh: DRAL's start may last long enough for anything.
TEST_F(StartCompanions, EachDispatcherAsksForTheFamilyItself) {
    LoggedMachine machine(os::win98);
    System& system = machine.system;
    system.addPrinter("Office");
    companions.runNemb(system);
    system.processes.onStart = [&](const Start&) {
        companions.showDralHidden(system);
        system.os = os::winXp;
    };
    EXPECT_TRUE(startCompanions("Office", "LPT1:", record));
    EXPECT_FALSE(wasCalled(system, "StartDRALXP"));
    EXPECT_TRUE(wasCalled(system, "StartNEMBXP"));
    EXPECT_FALSE(wasCalled(system, "StartNEMB9X"));
    EXPECT_EQ(record.dralMode, DWORD{VOK_MODE_NONE});
    EXPECT_EQ(record.nembMode, DWORD{VOK_MODE_WINDOW});
}

TEST_F(StartCompanions, WithoutDralNembIsStartedInWindowModeOnly) {
    for (const DWORD mode : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(mode);
        LoggedMachine machine(os::win98);  // whose start leaves the mode as it was
        machine.system.addPrinter("Office");
        companions.runNemb(machine.system);
        machine.system.processes.refuse("dral", ERROR_FILE_NOT_FOUND);
        const HANDLE before = handleOf(Kind::window, 77);
        record.hNEMB = before;
        record.dralMode = mode;
        EXPECT_FALSE(startCompanions("Office", "LPT1:", record));
        EXPECT_EQ(record.hDRAL, nullptr);
        EXPECT_EQ(wasCalled(machine.system, "StartNEMB9X"), mode == VOK_MODE_WINDOW);
        EXPECT_EQ(record.hNEMB, mode == VOK_MODE_WINDOW ? handleOf(Kind::window, 1) : before);
    }
}

TEST_F(StartCompanions, APipeThatCannotBeMadeCountsAsReached) {
    LoggedMachine machine(os::win7);
    machine.system.addPrinter("Office").separateSessions();
    machine.system.faults.fail("CreateNamedPipeA", 0, 1, Lasting::forEver);
    EXPECT_TRUE(startCompanions("Office", "LPT1:", record));
    EXPECT_EQ(record.hDRAL, INVALID_HANDLE_VALUE);
    EXPECT_EQ(record.hNEMB, INVALID_HANDLE_VALUE);
    EXPECT_EQ(record.dralMode, DWORD{VOK_MODE_PIPE});
    EXPECT_EQ(record.nembMode, DWORD{VOK_MODE_PIPE});
}

TEST_F(StartCompanions, NembsFailureIsTheLaunchs) {
    LoggedMachine machine(os::winXp);
    machine.system.addPrinter("Office");
    companions.runDral(machine.system);
    EXPECT_FALSE(startCompanions("Office", "LPT1:", record));
    EXPECT_EQ(record.hDRAL, handleOf(Kind::window, 1));
    EXPECT_EQ(record.hNEMB, nullptr);
}

}  // namespace
}  // namespace vok::test
