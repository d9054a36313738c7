// The simulation under the library itself: what it shows of a call, and the companions' names.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "sim/sim.h"
#include "support/os_version.h"

namespace vok::test {
namespace {

// A system on which both companions run.
class Running : public ::testing::TestWithParam<OsRelease> {
  protected:
    Running() {
        system.addPrinter("Office").startLog();
        std::snprintf(record.dralTitleSuffix, sizeof(record.dralTitleSuffix), "%s",
                      companions.suffix.c_str());
        companions.runDral(system);
        companions.runNemb(system);
    }
    System system{GetParam()};
    Companions companions;
    LoadedLibrary library;
    VKDATA record{};
};

TEST_P(Running, CompanionsAreFoundByTheirNames) {
    EXPECT_EQ(library.launchXFiles("Office", "LPT1:", &record), 1);
    EXPECT_TRUE(system.processes.starts.empty());
    expectNoLeaks(system);
}

TEST_P(Running, LoggingIsLeftOutOfTheCalls) {
    char block[VOK_NEMB_BLOCK_SIZE] = "Office";
    record.hDRAL = system.desktop.all()[0]->handle;
    system.calls.clear();
    library.sendDralMsg(block, SM_STARTPAGE, &record);
    expectCalls(system, {"GetVersionExA", "SendMessageA"});
    EXPECT_GT(system.calls.all().size(), 50u);
    EXPECT_FALSE(system.logLines().empty());
}

INSTANTIATE_TEST_SUITE_P(Every, Running, ::testing::Values(os::win98, os::nt40, os::win10),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(Companions, AppearWhenStarted) {
    for (const OsRelease& os : os::all) {
        System system(os);
        system.addPrinter("Office");
        const Companions companions;
        companions.appearWhenStarted(system);
        const LoadedLibrary library;
        VKDATA record{};
        std::snprintf(record.dralTitleSuffix, sizeof(record.dralTitleSuffix), "%s",
                      companions.suffix.c_str());
        EXPECT_EQ(library.launchXFiles("Office", "LPT1:", &record), 1) << os;
        ASSERT_EQ(system.processes.starts.size(), 2u) << os;
        if (os.isNt()) {
            EXPECT_EQ(system.processes.starts[0].commandLine, companions.dralLine(system));
            EXPECT_EQ(system.processes.starts[1].commandLine, companions.nembLine(system));
        }
    }
}

TEST(Sources, VersionIsReadAnew) {
    System system(os::win98);
    const SimulatedProcess simulated;
    EXPECT_EQ(OsVersion().getVersion(), OsVersion::Win98);
}

TEST(Sources, StreamsFindSimulatedFiles) {
    System system;
    const SimulatedProcess simulated;
    EXPECT_EQ(std::fopen("C:\\DEMOVok.log", "r"), nullptr);
    system.files.put("C:\\DEMOVok.log");
    FILE* file = std::fopen("C:\\DEMOVok.log", "r");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
}

}  // namespace
}  // namespace vok::test
