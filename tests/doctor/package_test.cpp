// Files, print processors, printers and queues that are not as they should be.
#include <vok/companion.h>

#include <string>

#include "doctor/doctor_machine.h"

namespace vok::test {
namespace {

constexpr char otherKey[] = R"(SOFTWARE\DEMO\Painter)";

std::string firstHalf(const std::string& path) {
    const std::string bytes = fileText(path);
    return bytes.substr(0, bytes.size() / 2);
}

std::string replaced(std::string bytes, const std::string& from, const std::string& to) {
    const std::size_t at = bytes.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return bytes.replace(at, to.size(), to);
}

std::string shipped(const std::string& name) {
    return fileText(productFolder() + "/" + name);
}

void setProcessor(const std::string& name) {
    setOfPrinter(printerName, "Print Processor", name);
}

// Another printer of the demo's, with the prefix data given; an empty one is none.
class SecondPrinter {
  public:
    explicit SecondPrinter(const std::string& prefix) {
        runProgram(product("vok-install.exe") + " install --printer Second");
        setOfPrinter("Second\\PrinterDriverData", VOK_PRINTER_PREFIX_VALUE, prefix);
    }
    ~SecondPrinter() {
        runProgram(product("vok-install.exe") + " remove --printer Second");
        runProgram(product("vok-install.exe") + " install");
        doctor("--log on");
    }
    SecondPrinter(const SecondPrinter&) = delete;
    SecondPrinter& operator=(const SecondPrinter&) = delete;
};

void expectSays(const Outcome& outcome, const std::string& text) {
    EXPECT_NE(outcome.output.find(text), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, CompanionCutInHalf) {
    for (const char* name : {"DEMODRAL.EXE", "DEMONEMB.EXE"}) {
        const std::string path = driverFolder + std::string(name);
        const PlantedFile half(path, firstHalf(path));
        const Outcome outcome = doctor("");
        expectProblem(outcome, "file-cut");
        EXPECT_NE(firstProblem(outcome.output).find(name), std::string::npos);
    }
}

TEST_F(DoctorTest, ConfigurationLibraryCutInHalf) {
    const std::string path = driverFolder + std::string("DEMOcfg.dll");
    const PlantedFile half(path, firstHalf(path));
    const Outcome outcome = doctor("");
    expectProblem(outcome, "file-cut");
    expectSays(outcome, "problem  configuration library       " + path + " has ");
    expectSays(outcome, "\nmost likely cause of a log that is missing or misses records: ");
}

TEST_F(DoctorTest, ProcessorOfTheSystem) {
    setProcessor("winprint");
    const Undo undo([] { setProcessor("DEMOproc"); });
    expectProblem("", "processor-of-system");
}

TEST_F(DoctorTest, ProcessorThatIsGone) {
    {
        const MovedFile moved(R"(..\..\..\prtprocs\x64\DEMOproc.dll)");
        expectProblem("", "processor-missing");
    }
    setProcessor("ACMEproc");
    const Undo undo([] { setProcessor("DEMOproc"); });
    expectProblem("", "processor-missing");
}

TEST_F(DoctorTest, ProcessorCutInHalf) {
    const std::string path = processorFolder + std::string("DEMOproc.dll");
    const PlantedFile half(path, firstHalf(path));
    expectProblem("", "file-cut");
}

// What another DLL of the processor does can't be seen: no fact, and no problem.
TEST_F(DoctorTest, ProcessorOfSomebodyElse) {
    const PlantedFile other(processorFolder + std::string("DEMOproc.dll"), shipped("DEMOui.dll"));
    const Outcome outcome = doctor("");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    expectSays(outcome, "#processor-foreign)");
    expectSays(outcome, "\nno certain cause found; a possible one of jobs whose companions");
}

TEST_F(DoctorTest, SecondPrinterIsSeenWithoutBeingNamed) {
    const SecondPrinter second("ACME");
    const Outcome outcome = runProgram(product("vok-doctor.exe"));
    expectProblem(outcome, "prefix-wrong");
    EXPECT_NE(firstProblem(outcome.output).find("Second: "), std::string::npos);
    expectSays(outcome, "ok       printer data                Demo Printer: ");
    EXPECT_EQ(doctor("").status, 0u) << "the one that is named has no fault";
}

TEST_F(DoctorTest, PrinterWithTheProcessorAndNoData) {
    const SecondPrinter second("");
    const Outcome outcome = runProgram(product("vok-doctor.exe"));
    expectProblem(outcome, "prefix-missing");
    EXPECT_NE(firstProblem(outcome.output).find("Second has no"), std::string::npos);
}

TEST_F(DoctorTest, PrinterOfAnotherModelIsNoFault) {
    const SecondPrinter second("ACME");
    const PlantedFile library(driverFolder + std::string("ACMEvok.dll"), shipped("DEMOvok.dll"));
    const Outcome outcome =
        runProgram(product("vok-doctor.exe") + " " + driverFolder + "DEMOvok.dll");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    expectSays(outcome, "note     printer data                Second: ");
}

TEST_F(DoctorTest, JobsInTheQueue) {
    // The test machine's spooler lives in the printing program, so what it tells is replaced.
    const auto look = [](const char* library) {
        return doctor("", [library](HANDLE process) { loadFirst(process, library); });
    };
    const Outcome held = look(WITH_HELD_JOB);
    expectProblem(held, "job-stuck");
    expectSays(held, "job 7, in the queue for 3 min: paused, out of paper");
    const Outcome old = look(WITH_OLD_JOB);
    EXPECT_EQ(old.status, 0u) << old.output;
    expectSays(old,
               "warning  queue                       Demo Printer: job 7, in the queue for 25 min");
}

TEST_F(DoctorTest, DriverFileThatIsGone) {
    const MovedFile moved("DEMOui.dll");
    expectProblem("", "driver-files");
}

TEST_F(DoctorTest, FilesOfDifferentVersions) {
    // The fixed part of the version resource begins with this number; the version follows.
    const std::string other =
        replaced(shipped("vok-doctor.exe"), std::string("\xBD\x04\xEF\xFE\0\0\1\0", 8),
                 std::string("\xBD\x04\xEF\xFE\0\0\1\0\3\0\7\0", 12));
    const PlantedFile dral(driverFolder + std::string("DEMODRAL.EXE"), other);
    const Outcome outcome = doctor("");
    expectSays(outcome, "#package-versions)");
    expectSays(outcome, "DEMODRAL.EXE 7.3.0.0");
}

TEST_F(DoctorTest, LogThatIsTooLarge) {
    const PlantedFile log(R"(C:\DEMOVok.log)", "");
    const auto grow = [](LONGLONG size) {
        const HANDLE file =
            CreateFileA(R"(C:\DEMOVok.log)", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        LARGE_INTEGER end = {};
        end.QuadPart = size;
        EXPECT_NE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN), 0);
        EXPECT_NE(SetEndOfFile(file), 0);
        CloseHandle(file);
    };
    constexpr LONGLONG mebibyte = 1 << 20;
    grow(2047 * mebibyte);
    const Outcome nearly = doctor("");
    EXPECT_EQ(nearly.status, 0u) << nearly.output;
    expectSays(nearly, "#log-too-large)");
    grow(2253 * mebibyte);
    const Outcome outcome = doctor("");
    expectProblem(outcome, "log-too-large");
    expectSays(outcome, "has 2253 MiB");
}

TEST_F(DoctorTest, StrayConfigurationLibrary) {
    const std::string stray = systemFolder + std::string("DEMOcfg.dll");
    {
        const PlantedFile same(stray, shipped("DEMOcfg.dll"));
        const Outcome outcome = doctor("");
        EXPECT_EQ(outcome.status, 0u) << outcome.output;
        expectSays(outcome, "note     configuration library");
    }
    const PlantedFile other(stray, replaced(shipped("DEMOcfg.dll"), R"(\Printer)", R"(\Painter)"));
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, otherKey, "there", REG_SZ, "", 1), 0);
    const Undo undo([] { RegDeleteTreeA(HKEY_LOCAL_MACHINE, otherKey); });
    const Outcome outcome = doctor("--log off");
    expectProblem(outcome, "configuration-several");
    expectSays(outcome, "#options-not-set)");
    HKEY key = nullptr;
    EXPECT_NE(RegOpenKeyA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\DEMO\Painter\XFiles)", &key), 0);
    DWORD start = 0;
    DWORD size = sizeof start;
    EXPECT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, optionsKey, "startLog", RRF_RT_REG_DWORD, nullptr,
                           &start, &size),
              0);
    EXPECT_EQ(start, 1u) << "the right key is as it was";
}

}  // namespace
}  // namespace vok::test
