#include "support/module.h"

#include <gtest/gtest.h>

#include <string>

#include "logged_machine.h"

namespace vok::test {
namespace {

constexpr const char* library = "DEMOcfg.dll";

TEST(PrinterPath, EndsInTheSubdirectoryOfTheSystemsDrivers) {
    const std::string drivers = R"(C:\WINDOWS\system32\spool\drivers\x64)";
    for (const OsRelease& release : os::all) {
        SimulatedMachine machine(release);
        std::string path = "before";
        EXPECT_EQ(Module::GetPrinterPath(path), 0U);
        const bool isNt4 = release.isNt() && release.major == 4;
        EXPECT_EQ(path, drivers + (release.is9x() ? R"(\)"
                                   : isNt4        ? R"(\2\)"
                                                  : R"(\3\)"))
            << release;
        expectCallsOf(machine.system, "GetPrinterDriverDirectoryA",
                      {R"(GetPrinterDriverDirectoryA(null, null, 1, out, 260, out) = 1 -> ")" +
                       drivers + "\""});
    }
}

TEST(PrinterPath, IsLogged) {
    LoggedMachine machine;
    std::string path;
    Module::GetPrinterPath(path);
    expectMessages(machine.system,
                   {R"(Module::GetPrinterPath(), C:\WINDOWS\system32\spool\drivers\x64\3\)"});
}

TEST(PrinterPath, AFailureIsLoggedAndLeavesThePathAlone) {
    LoggedMachine machine;
    machine.system.spooler.driverDirectoryError = 1722;
    std::string path = "before";
    EXPECT_EQ(Module::GetPrinterPath(path), 1722U);
    EXPECT_EQ(path, "before");
    expectMessages(machine.system, {"Module::GetPrinterDriverDirectory() fails, ret = 1722"});
}

TEST(PrinterPath, AFailureWithoutAnErrorCodeLeavesThePathAloneToo) {
    LoggedMachine machine;
    machine.system.spooler.driverDirectoryError = ERROR_SUCCESS;
    std::string path = "before";
    EXPECT_EQ(Module::GetPrinterPath(path), 0U);
    EXPECT_EQ(path, "before");
    expectMessages(machine.system, {"Module::GetPrinterDriverDirectory() fails, ret = 0"});
}

TEST(PrinterPath, AnOverlongDirectoryIsAFailure) {
    LoggedMachine machine;
    machine.system.greedyBuffers = true;
    std::string path = "before";
    machine.system.spooler.driverDirectory = std::string(260, 'd');
    EXPECT_EQ(Module::GetPrinterPath(path), 122U);
    EXPECT_EQ(path, "before");
    machine.system.spooler.driverDirectory = std::string(259, 'd');
    EXPECT_EQ(Module::GetPrinterPath(path), 0U);
    EXPECT_EQ(path, std::string(259, 'd') + R"(\3\)");
}

TEST(Module, LoadsNothingWhenItIsMade) {
    SimulatedMachine machine;
    const Module module(library, 0);
    EXPECT_EQ(machine.system.calls.names(), Lines{"GetPrinterDriverDirectoryA"});
    EXPECT_EQ(module.getHandle(), nullptr);
}

TEST(Module, LoadsByTheSystemsSearchOrderFirst) {
    LoggedMachine machine;
    machine.system.modules.config.inDriverDirectory = true;
    {
        Module module(library, 0);
        EXPECT_EQ(module.Load(), 0U);
        EXPECT_EQ(module.Load(), 0U);
        EXPECT_NE(module.getHandle(), nullptr);
        EXPECT_EQ(machine.system.modules.countLoaded(library), 1U);
        expectCallsOf(machine.system, "LoadLibraryA",
                      {R"(LoadLibraryA("DEMOcfg.dll") = module#2)"});
    }
    EXPECT_EQ(machine.system.modules.countLoaded(library), 0U);
    expectMessages(machine.system,
                   {R"(Module::GetPrinterPath(), C:\WINDOWS\system32\spool\drivers\x64\3\)"});
}

TEST(Module, LoadsFromTheDriverDirectoryNext) {
    SimulatedMachine machine;
    machine.system.modules.config.inDriverDirectory = true;
    Module module(library, 0);
    EXPECT_EQ(module.Load(), 0U);
    expectCallsOf(
        machine.system, "LoadLibraryA",
        {R"(LoadLibraryA("DEMOcfg.dll") = null (error 126))",
         R"(LoadLibraryA("C:\WINDOWS\system32\spool\drivers\x64\3\DEMOcfg.dll") = module#1)"});
    EXPECT_NE(module.getProcAddress("GetConfigData"), nullptr);
}

TEST(Module, OneThatIsNowhereIsLoggedWithThePathAndTheCode) {
    LoggedMachine machine;
    machine.system.files.remove(machine.system.logPath());
    Module module("nowhere.dll", 0);
    EXPECT_EQ(module.Load(), 126U);
    EXPECT_EQ(module.getHandle(), nullptr);
    EXPECT_EQ(module.UnLoad(), 0U);
    EXPECT_EQ(machine.system.calls.count("FreeLibrary"), 0U);
    const std::string path = R"(C:\WINDOWS\system32\spool\drivers\x64\3\)";
    expectMessages(machine.system, {"Module::GetPrinterPath(), " + path,
                                    "Failed to Loadlibrary, path= " + path + "nowhere.dllret=126"});
}

TEST(Module, WithoutADriverDirectoryThePlainNameIsTriedTwice) {
    LoggedMachine machine;
    machine.system.spooler.driverDirectoryError = 1722;
    Module module("nowhere.dll", 0);
    EXPECT_EQ(module.Load(), 126U);
    expectCallsOf(machine.system, "LoadLibraryA",
                  {R"(LoadLibraryA("nowhere.dll") = null (error 126))",
                   R"(LoadLibraryA("nowhere.dll") = null (error 126))"});
    expectMessages(machine.system, {"Module::GetPrinterDriverDirectory() fails, ret = 1722",
                                    "Failed to Loadlibrary, path= nowhere.dllret=126"});
}

TEST(Module, UnloadsOnceMoreAtItsEnd) {
    SimulatedMachine machine;
    machine.system.modules.config.inSearchPath = true;
    {
        Module module(library, 0);
        module.Load();
        EXPECT_EQ(module.UnLoad(), 0U);
        EXPECT_NE(module.getHandle(), nullptr);
    }
    expectCallsOf(machine.system, "FreeLibrary",
                  {"FreeLibrary(module#1) = 1", "FreeLibrary(module#1) = 0 (error 6)"});
}

TEST(Module, AFailureToUnloadIsLogged) {
    LoggedMachine machine;
    const std::string path = R"(C:\WINDOWS\system32\spool\drivers\x64\3\)";
    {
        Module module(library, 0);
        module.Load();
        machine.system.faults.fail("FreeLibrary", 1);
        EXPECT_EQ(module.UnLoad(), 126U);
        machine.system.faults.fail("FreeLibrary", 0);
    }
    const std::string failed = "Module::UnLoad() | Failed to Unloadlibrary, path = " + path;
    expectMessages(machine.system, {"Module::GetPrinterPath(), " + path,
                                    failed + "DEMOcfg.dllret=126", failed + "DEMOcfg.dllret=6"});
}

TEST(Module, LooksUpNothingWithoutALibraryOrAName) {
    SimulatedMachine machine;
    machine.system.modules.config.inSearchPath = true;
    Module module(library, 0);
    EXPECT_EQ(module.getProcAddress("GetConfigData"), nullptr);
    module.Load();
    EXPECT_EQ(module.getProcAddress(nullptr), nullptr);
    expectCallsOf(machine.system, "GetProcAddress", {});
    EXPECT_EQ(module.getProcAddress("Other"), nullptr);
    EXPECT_NE(module.getProcAddress("GetConfigData"), nullptr);
}

TEST(Module, TheHostPrefixStandsTwelveCharactersBeforeTheEndOfItsPath) {
    const struct {
        const char* host;
        const char* loaded;
    } expected[] = {{R"(C:\PROG\ABCDEFGH.EXE)", R"("ABCDcfg.dll")"},
                    {R"(C:\WINDOWS\spoolsv.exe)", R"("\spocfg.dll")"},
                    {"ABCDEFGH.EXE", R"("ABCDcfg.dll")"},
                    {"SHORTER.EXE", R"("cfg.dll")"},
                    {"", R"("cfg.dll")"}};
    for (const auto& one : expected) {
        SimulatedMachine machine;
        machine.system.modules.hostPath = one.host;
        Module module("cfg.dll", 1);
        expectCallsOf(machine.system, "GetModuleHandleA", {"GetModuleHandleA(null) = host"});
        EXPECT_EQ(machine.system.calls.count("GetModuleFileNameA"), 1U);
        module.Load();
        EXPECT_EQ(machine.system.calls.linesOf("LoadLibraryA").front(),
                  std::string("LoadLibraryA(") + one.loaded + ") = null (error 126)");
    }
}

TEST(Module, AHostPathThatTheSystemLeavesWithoutAnEndIsCut) {
    SimulatedMachine machine;
    machine.system.modules.hostPath = std::string(247, 'x') + "ABCD" + std::string(100, 'y');
    machine.system.modules.cutPathsHaveNoEnd = true;
    Module module("cfg.dll", 1);
    module.Load();
    EXPECT_EQ(machine.system.calls.linesOf("LoadLibraryA").front(),
              R"(LoadLibraryA("ABCDcfg.dll") = null (error 126))");
}

TEST(Module, WithoutAHostModuleThereIsNoPrefix) {
    SimulatedMachine machine;
    machine.system.modules.hasHostModule = false;
    Module module("cfg.dll", 1);
    EXPECT_EQ(machine.system.calls.count("GetModuleFileNameA"), 0U);
    module.Load();
    EXPECT_EQ(machine.system.calls.linesOf("LoadLibraryA").front(),
              R"(LoadLibraryA("cfg.dll") = null (error 126))");
}

TEST(Module, TakesAnotherNameAndAnotherHandle) {
    SimulatedMachine machine;
    machine.system.modules.config.inSearchPath = true;
    Module module("other.dll", 0);
    module.setFileName(library);
    EXPECT_EQ(module.Load(), 0U);
    const HMODULE handle = module.getHandle();
    module.setHandle(nullptr);
    EXPECT_EQ(module.UnLoad(), 0U);
    expectCallsOf(machine.system, "FreeLibrary", {});
    module.setHandle(handle);
    EXPECT_EQ(module.getHandle(), handle);
}

}  // namespace
}  // namespace vok::test
