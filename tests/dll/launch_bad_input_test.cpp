// VOKLaunchXFiles with names of any length, without texts and without a record.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "dll/launch_lines.h"

namespace vok::test {
namespace {

// As a buffer of 260 characters keeps it.
std::string cut(const std::string& text) {
    return text.substr(0, 259);
}

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

std::string argumentsOf(const System& system, const char* function, size_t n) {
    size_t seen = 0;
    for (const CallRecord& call : system.calls.all()) {
        if (call.name == function && seen++ == n) {
            return call.arguments;
        }
    }
    ADD_FAILURE() << "no call " << n << " of " << function;
    return {};
}

std::vector<std::string> printerNames() {
    return {"", std::string(200, 'p'), std::string(259, 'p'), std::string(260, 'p'),
            std::string(1000, 'p')};
}

TEST(LaunchWithLongNames, ByMessages) {
    for (const std::string& name : printerNames()) {
        SCOPED_TRACE(name.size());
        Job job(os::win2000, Log::off);
        job.system.addPrinter(name);
        job.system.greedyBuffers = true;
        EXPECT_EQ(job.library.launchXFiles(name.c_str(), "LPT1:", &job.record), 0);
        const System& system = job.system;
        EXPECT_EQ(argumentsOf(system, "OpenPrinterA", 0), quoted(name) + ", out, null");
        EXPECT_EQ(argumentsOf(system, "FindWindowA", 0),
                  "null, " + quoted(cut("DEMODRAL - " + name)));
        EXPECT_EQ(argumentsOf(system, "WinExec", 0),
                  quoted(cut(system.driverPath() + "DEMODRAL.EXE SPLPP /F=" + name)) + ", 5");
        const std::string keyPath = cut(R"(System\CurrentControlSet\control\Print\Printers\)" +
                                        name + R"(\PrinterDriverData)");
        EXPECT_EQ(argumentsOf(system, "RegOpenKeyA", 0), "HKLM, " + quoted(keyPath) + ", out");
        // A path that was cut leads to no key, and so to no prefix.
        const std::string prefix = name.size() < 197 ? "DEMO" : "";
        EXPECT_EQ(argumentsOf(system, "FindWindowA", 2),
                  quoted(prefix + "NEMB - ") + ", " + quoted(cut(prefix + "NEMB - " + name)));
        EXPECT_EQ(
            argumentsOf(system, "WinExec", 1),
            quoted(cut(system.driverPath() + prefix + "nemb.exe SPLPP /F=" + name + " /J=1")) +
                ", 5");
    }
}

TEST(LaunchWithLongNames, ByPipes) {
    for (const std::string& name : printerNames()) {
        SCOPED_TRACE(name.size());
        Job job(os::winXp);
        job.system.addPrinter(name).separateSessions();
        job.system.greedyBuffers = true;
        EXPECT_EQ(job.library.launchXFiles(name.c_str(), "LPT1:", &job.record), 1);
        const System& system = job.system;
        EXPECT_EQ(system.pipes.all().at(0)->name, cut(R"(\\.\pipe\DRAL)" + name));
        EXPECT_EQ(system.pipes.all().at(1)->name, cut(R"(\\.\pipe\NEMB)" + name));
        EXPECT_EQ(system.processes.starts.at(1).commandLine,
                  cut(system.driverPath() + "DEMONEMB.EXE SPLPP /F=" + name + " /J=1"));
        std::string upper = name;
        std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);
        EXPECT_EQ(argumentsOf(system, "OpenMutexA", 0),
                  "0x1f0001, 1, \"Global\\" + cut("DEMONEMB - " + upper) + '"');
        const Lines lines = job.newLines();
        EXPECT_EQ(lines.at(2), "FriendlyName = " + name + ", PortName = LPT1:");
        EXPECT_EQ(
            std::count(lines.begin(), lines.end(), "nemb title - " + cut("DEMONEMB - " + name)), 1);
        EXPECT_EQ(
            std::count(lines.begin(), lines.end(),
                       "Launching Nmeb, Path = " +
                           cut(system.driverPath() + "DEMONEMB.EXE SPLPP /F=" + name + " /J=1")),
            1);
    }
}

// Characters beyond 127 and those that have no capital stay as they are.
TEST(LaunchWithLongNames, MutexOfANameWithUmlauts) {
    Job job(os::winXp, Log::off);
    job.system.addPrinter("B\xFCro 2.Stock").separateSessions();
    job.library.launchXFiles("B\xFCro 2.Stock", "LPT1:", &job.record);
    EXPECT_EQ(argumentsOf(job.system, "OpenMutexA", 0),
              "0x1f0001, 1, \"Global\\DEMONEMB - B\xFCRO 2.STOCK\"");
}

TEST(LaunchWithLongNames, On9x) {
    for (const std::string& name : printerNames()) {
        SCOPED_TRACE(name.size());
        Job job(os::win98, Log::off);
        job.system.addPrinter(name);
        job.system.greedyBuffers = true;
        job.system.desktop.add("DRAL Hidden Window-", "x");
        EXPECT_EQ(job.library.launchXFiles(name.c_str(), "LPT1:", &job.record), 0);
        EXPECT_EQ(argumentsOf(job.system, "FindWindowA", 0),
                  R"("DRAL Hidden Window-", )" + quoted(cut("DRAL - " + name)));
        EXPECT_EQ(job.system.processes.starts.at(0).commandLine, cut(" SPLPP /F=" + name));
        EXPECT_EQ(job.system.processes.starts.at(1).commandLine,
                  cut(" SPLPP /F=" + name + " /J=1"));
    }
}

TEST(LaunchWithLongNames, PortOfAnyLength) {
    for (const size_t size : {259u, 260u, 1000u}) {
        SCOPED_TRACE(size);
        const std::string port = R"(\\server\)" + std::string(size, 'q');
        Job job(os::win2000);
        job.launch(port.c_str());
        EXPECT_EQ(job.system.calls.count("CreateProcessAsUserA"), 1u);
        const Lines lines = job.newLines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(),
                             "P2P Port. Launching App in the user context. Port = " + port),
                  1);
    }
}

// Registry texts need not end in a NUL.
TEST(LaunchWithLongNames, PrinterPrefixWithoutNul) {
    Job job(os::winXp, Log::off);
    job.system.greedyBuffers = true;
    job.system.registry.setValue(
        R"(System\CurrentControlSet\control\Print\Printers\Office\PrinterDriverData)",
        "Printer Prefix", {REG_SZ, std::string(50, 'x')});
    job.launch();
    const std::string className = std::string(50, 'x') + "NEMB - ";
    EXPECT_EQ(argumentsOf(job.system, "FindWindowA", 2),
              quoted(className) + ", " + quoted(className + "Office"));
}

// Of the computer's name 255 characters are read; a longer one can't be had, and so is empty.
TEST(LaunchWithLongNames, ComputerNameWithoutNul) {
    for (const size_t size : {255u, 256u}) {
        SCOPED_TRACE(size);
        Job job(os::win2000, Log::off);
        job.system.greedyBuffers = true;
        const std::string computer(size, 'C');
        job.system.registry.setValue(
            R"(SYSTEM\CurrentControlSet\Control\ComputerName\ActiveComputerName)", "ComputerName",
            {REG_SZ, computer});
        job.launch((computer + R"(\\server\queue)").c_str());
        EXPECT_EQ(job.system.calls.count("CreateProcessAsUserA"), size == 255 ? 1u : 0u);
    }
}

TEST(LaunchWithLongNames, SystemDirectoryThatFillsItsBuffer) {
    Job job(os::win98, Log::off);
    job.system.greedyBuffers = true;
    job.system.modules.systemDirectory = std::string(259, 's');
    job.launch();
    EXPECT_EQ(job.system.processes.starts.at(0).application, std::string(259, 's'));
}

// Of a path of 400 characters only the first 259 are there to look for the file's name in.
TEST(LaunchWithLongNames, LibrarysOwnPathThatFillsItsBuffer) {
    for (const size_t size : {259u, 400u}) {
        Job job(os::win2000, Log::off);
        job.system.greedyBuffers = true;
        job.system.modules.libraryPath = R"(C:\)" + std::string(size - 13, 'd') + R"(\ABCDv.dll)";
        ASSERT_EQ(job.system.modules.libraryPath.size(), size);
        job.launch();
        const std::string expected = size == 259 ? R"(\ABCDDRAL.EXE)" : R"(\ddddDRAL.EXE)";
        EXPECT_TRUE(job.system.processes.starts.at(0).mentions(expected));
    }
}

// 241 characters, of which 240 fit behind the name's beginning.
TEST(LaunchWithLongNames, SuffixWithoutNul) {
    for (const OsRelease& os : {os::win98, os::winXp}) {
        SCOPED_TRACE(os);
        const GuardedBytes place = recordWithoutNul();
        auto* record = static_cast<VKDATA*>(place.data());
        Job job(os, Log::off);
        job.library.launchXFiles("Office", "LPT1:", record);
        EXPECT_EQ(argumentsOf(job.system, "FindWindowA", os.is9x() ? 2 : 1),
                  quoted("DRAL Hidden Window-" + std::string(240, 's')) + ", null");
        EXPECT_EQ(record->dralTitleSuffix[240], 's');
    }
}

TEST(LaunchWithoutTexts, NullCountsAsEmpty) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        Job job(os);
        job.system.addPrinter("").separateSessions();
        job.library.launchXFiles(nullptr, nullptr, &job.record);
        const Lines lines = job.newLines();
        EXPECT_EQ(lines.at(2), "FriendlyName = , PortName = ");
        const std::string start =
            os.is9x() ? " SPLPP /F=" : job.system.driverPath() + "DEMODRAL.EXE SPLPP /F=";
        EXPECT_EQ(job.system.processes.starts.at(0).commandLine, start);
    }
}

TEST(LaunchWithoutRecord, StartsNothing) {
    for (const OsRelease& os : os::all) {
        SCOPED_TRACE(os);
        Job job(os);
        EXPECT_EQ(job.library.launchXFiles("Office", "LPT1:", nullptr), 0);
        EXPECT_TRUE(job.system.processes.starts.empty());
        job.expectNewLines(launchBegins() + Lines{launchFailed});
    }
}

}  // namespace
}  // namespace vok::test
