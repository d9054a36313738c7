// Everything that VOKLaunchXFiles asks of the system, call by call, in the main scenarios.
#include <gtest/gtest.h>

#include <string>

#include "dll/launch_lines.h"
#include "support/session_lines.h"

namespace vok::test {
namespace {

const std::string version = "GetVersionExA(148) = 1";
const std::string ownName =
    R"(GetModuleFileNameA(library, out, 260) = 50 -> "C:\WINDOWS\system32\spool\prtprocs\x64\DEMOvok.dll")";
const std::string driverDirectory =
    R"(GetPrinterDriverDirectoryA(null, null, 1, out, 260, out) = 1 -> "C:\WINDOWS\system32\spool\drivers\x64")";

std::string numbered(const std::string& kind, int n) {
    return kind + "#" + std::to_string(n);
}

std::string opensPrinter(int n) {
    return R"(OpenPrinterA("Office", out, null) = 1 -> )" + numbered("printer", n);
}

std::string closesPrinter(int n) {
    return "ClosePrinter(" + numbered("printer", n) + ") = 1";
}

Lines asksForComputerName(int n) {
    const std::string key = numbered("key", n);
    return {R"(RegOpenKeyExA(HKLM, "SYSTEM\CurrentControlSet\Control\ComputerName\)"
            R"(ActiveComputerName", 0, 0x20019, out) = 0 -> )" +
                key,
            "RegQueryValueExA(" + key + R"(, "ComputerName", null, null, out, 255) = 0 -> "HOST")",
            "RegCloseKey(" + key + ") = 0"};
}

Lines asksForPrinterPrefix(int n) {
    const std::string key = numbered("key", n);
    return {R"(RegOpenKeyA(HKLM, "System\CurrentControlSet\control\Print\Printers\Office\)"
            R"(PrinterDriverData", out) = 0 -> )" +
                key,
            "RegQueryValueExA(" + key + R"(, "Printer Prefix", null, null, out, 50) = 0 -> "DEMO")",
            "RegCloseKey(" + key + ") = 0"};
}

Lines comparesSessions(int own) {
    return consoleSessionLines +
           Lines{R"(GetProcAddress(kernel32, "ProcessIdToSessionId") = 0 -> found)",
                 "ProcessIdToSessionId(0x1a2c, out) = 1 -> " + std::to_string(own)};
}

const Lines loadsEnvironmentLibrary = {
    systemDirectoryLine, R"(LoadLibraryA("C:\WINDOWS\system32\userenv.dll") = userenv)",
    R"(GetProcAddress(userenv, "CreateEnvironmentBlock") = 0 -> found)",
    R"(GetProcAddress(userenv, "DestroyEnvironmentBlock") = 0 -> found)"};

std::string createsProcess(const std::string& token, const std::string& file,
                           const std::string& arguments, const std::string& environment, int n) {
    return "CreateProcessAsUserA(" + token +
           R"(, null, "C:\WINDOWS\system32\spool\drivers\x64\3\)" + file + " SPLPP /F=Office" +
           arguments + "\", null, null, 0, 0x0, " + environment +
           R"(, null, startup{104, desktop="Winsta0\Default", flags=0}, out) = 1 -> )" +
           numbered("process", n) + ", " + numbered("thread", n);
}

// The n-th start with the user's token.
Lines startsAsUser(const std::string& file, const std::string& arguments, int n) {
    const std::string token = numbered("token", n);
    const std::string environment = numbered("environment", n);
    return loadsEnvironmentLibrary + Lines{version} + asksForComputerName(n) + consoleSessionLines +
           Lines{"WTSQueryUserToken(1, out) = 1 -> " + token,
                 "CreateEnvironmentBlock(out, " + token + ", 0) = 1 -> " + environment,
                 createsProcess(token, file, arguments, environment, n),
                 "DestroyEnvironmentBlock(" + environment + ") = 1",
                 "CloseHandle(" + token + ") = 1"};
}

Lines makesPipe(const std::string& companion, int n) {
    return {"InitializeSecurityDescriptor(out, 1) = 1",
            "SetSecurityDescriptorDacl(out, 1, null, 0) = 1",
            R"(CreateNamedPipeA("\\.\pipe\)" + companion +
                R"(Office", 3, 0, 2, 1024, 1024, 1000, sa{24, inherit=1, dacl=null}) = )" +
                numbered("pipe", n)};
}

const Lines looksForNembsMutex = {
    R"(OpenMutexA(0x1f0001, 1, "Global\DEMONEMB - OFFICE") = null (error 2))",
    "FormatMessageA(0x1200, null, 2, 0x409, out, 256) = 44"};

TEST(LaunchCalls, PipesCold) {
    Job job(os::winXp, Log::off);
    job.system.separateSessions();
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls(
        Lines{version, ownName, version} + comparesSessions(0) +
        Lines{opensPrinter(1), R"(FindWindowA(null, "DEMODRAL - Office") = null (error 2))",
              driverDirectory, version} +
        startsAsUser("DEMODRAL.EXE", "", 1) + makesPipe("DRAL", 1) +
        Lines{closesPrinter(1), version, ownName, version} + comparesSessions(0) +
        Lines{opensPrinter(2), R"(FindWindowA(null, "DEMONEMB - Office") = null (error 2))"} +
        looksForNembsMutex + Lines{driverDirectory, version} +
        startsAsUser("DEMONEMB.EXE", " /J=1", 2) + makesPipe("NEMB", 2) + Lines{closesPrinter(2)});
}

TEST(LaunchCalls, PipesWarm) {
    Job job(os::win10, Log::off);
    job.system.separateSessions();
    job.system.desktop.add("any", "DEMODRAL - Office");
    job.system.mutexes.add(R"(Global\DEMONEMB - OFFICE)");
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls(
        Lines{version, ownName, version} + comparesSessions(0) +
        Lines{opensPrinter(1), R"(FindWindowA(null, "DEMODRAL - Office") = window#1)"} +
        makesPipe("DRAL", 1) + Lines{closesPrinter(1), version, ownName, version} +
        comparesSessions(0) +
        Lines{opensPrinter(2), R"(FindWindowA(null, "DEMONEMB - Office") = null (error 2))",
              R"(OpenMutexA(0x1f0001, 1, "Global\DEMONEMB - OFFICE") = mutex#1)",
              "CloseHandle(mutex#1) = 1"} +
        makesPipe("NEMB", 2) + Lines{closesPrinter(2)});
}

TEST(LaunchCalls, PipesWithNobodyAtTheConsole) {
    Job job(os::win2003, Log::off);
    job.system.separateSessions();
    job.system.sessions.userTokenError = 1008;
    job.system.desktop.add("any", "DEMONEMB - Office");
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls(
        Lines{version, ownName, version} + comparesSessions(0) +
        Lines{opensPrinter(1), R"(FindWindowA(null, "DEMODRAL - Office") = null (error 2))",
              driverDirectory, version} +
        loadsEnvironmentLibrary + Lines{version} + asksForComputerName(1) + consoleSessionLines +
        Lines{
            "WTSQueryUserToken(1, out) = 0 (error 1008)",
            R"(WinExec("C:\WINDOWS\system32\spool\drivers\x64\3\DEMODRAL.EXE SPLPP /F=Office", 1))"
            " = 33"} +
        makesPipe("DRAL", 1) + Lines{closesPrinter(1), version, ownName, version} +
        comparesSessions(0) +
        Lines{opensPrinter(2), R"(FindWindowA(null, "DEMONEMB - Office") = window#1)"} +
        makesPipe("NEMB", 2) + Lines{closesPrinter(2)});
}

TEST(LaunchCalls, MessagesCold) {
    Job job(os::nt40, Log::off);
    EXPECT_EQ(job.launch(), 0);
    job.expectNewCalls(
        Lines{version, ownName, version, opensPrinter(1),
              R"(FindWindowA(null, "DEMODRAL - Office") = null (error 2))", driverDirectory,
              version} +
        asksForComputerName(1) +
        Lines{
            R"(WinExec("C:\WINDOWS\system32\spool\drivers\x64\2\DEMODRAL.EXE SPLPP /F=Office", 5))"
            " = 33",
            R"(FindWindowA("DRAL Hidden Window-", null) = null (error 2))", closesPrinter(1),
            version, ownName, version, opensPrinter(2)} +
        asksForPrinterPrefix(2) +
        Lines{R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = null (error 2))",
              driverDirectory, version,
              R"(WinExec("C:\WINDOWS\system32\spool\drivers\x64\2\DEMOnemb.exe SPLPP /F=Office)"
              R"( /J=1", 5) = 33)",
              R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = null (error 2))",
              closesPrinter(2)});
}

TEST(LaunchCalls, MessagesWarm) {
    Job job(os::win7, Log::off);
    job.system.desktop.add("any", "DEMODRAL - Office");
    job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls(
        Lines{version, ownName, version} + comparesSessions(1) +
        Lines{opensPrinter(1), R"(FindWindowA(null, "DEMODRAL - Office") = window#1)",
              closesPrinter(1), version, ownName, version} +
        comparesSessions(1) + Lines{opensPrinter(2)} + asksForPrinterPrefix(1) +
        Lines{R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = window#2)", closesPrinter(2)});
}

TEST(LaunchCalls, NetworkPortWithTheSpoolersToken) {
    Job job(os::win2000, Log::off);
    job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
    EXPECT_EQ(job.launch(R"(\\server\queue)"), 0);
    job.expectNewCalls(
        Lines{version, ownName, version, opensPrinter(1),
              R"(FindWindowA(null, "DEMODRAL - Office") = null (error 2))", driverDirectory,
              version} +
        asksForComputerName(1) + loadsEnvironmentLibrary + Lines{version} + asksForComputerName(2) +
        Lines{"ImpersonateSelf(3) = 1", "OpenThreadToken(current, 0xb, 0, out) = 1 -> token#1",
              "ImpersonateLoggedOnUser(token#1) = 1",
              "DuplicateTokenEx(token#1, 0xb, null, 2, 1, out) = 1 -> token#2",
              createsProcess("token#2", "DEMODRAL.EXE", "", "null", 1), "CloseHandle(token#1) = 1",
              "CloseHandle(token#2) = 1",
              R"(FindWindowA("DRAL Hidden Window-", null) = null (error 2))", closesPrinter(1),
              version, ownName, version, opensPrinter(2)} +
        asksForPrinterPrefix(3) +
        Lines{R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = window#1)", closesPrinter(2)});
}

TEST(LaunchCalls, On9xCold) {
    Job job(os::win98, Log::off);
    job.system.processes.onStart = [&](const Start& start) {
        const bool isDral = start.mentions("dral");
        Window& window = isDral ? job.system.desktop.add("DRAL Hidden Window-", "any")
                                : job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
        window.hiddenFor = isDral ? 1 : 0;
    };
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls(
        {version, opensPrinter(1),
         R"(FindWindowA("DRAL Hidden Window-", "DRAL - Office") = null (error 2))", ownName,
         systemDirectoryLine,
         R"(CreateProcessA("C:\WINDOWS\system32\DEMOdral.exe", " SPLPP /F=Office", null, null, 0, )"
         "0x0, null, null, startup{104, desktop=null, flags=0}, out) = 1 -> process#1, thread#1",
         R"(FindWindowA("DRAL Hidden Window-", null) = null (error 2))", "Sleep(10) = 0",
         R"(FindWindowA("DRAL Hidden Window-", null) = window#1)", closesPrinter(1), version,
         opensPrinter(2), ownName,
         R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = null (error 2))", systemDirectoryLine,
         R"(CreateProcessA("C:\WINDOWS\system32\DEMOnemb.exe", " SPLPP /F=Office /J=1", null, )"
         "null, 0, 0x0, null, null, startup{104, desktop=null, flags=0}, out) = 1 -> process#2, "
         "thread#2",
         R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = window#2)", closesPrinter(2)});
}

TEST(LaunchCalls, On9xWarm) {
    Job job(os::win95, Log::off);
    job.system.desktop.add("DRAL Hidden Window-", "DRAL - Office");
    job.system.desktop.add("DEMONEMB - ", "DEMONEMB - Office");
    EXPECT_EQ(job.launch(), 1);
    job.expectNewCalls({version, opensPrinter(1),
                        R"(FindWindowA("DRAL Hidden Window-", "DRAL - Office") = window#1)",
                        closesPrinter(1), version, opensPrinter(2), ownName,
                        R"(FindWindowA("DEMONEMB - ", "DEMONEMB - Office") = window#2)",
                        closesPrinter(2)});
}

}  // namespace
}  // namespace vok::test
