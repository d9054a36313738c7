// Faults planted one at a time: the doctor's first problem names each of them.
#include <vok/companion.h>
#include <winspool.h>

#include <string>

#include "doctor/doctor_machine.h"

namespace vok::test {
namespace {

constexpr char pipeRoute[] = "--spooler-session 0";

// Sets the printer's prefix data; with an empty text deletes it.
void setPrefixData(const std::string& prefix) {
    setOfPrinter("Demo Printer\\PrinterDriverData", VOK_PRINTER_PREFIX_VALUE, prefix);
}

void setOption(const char* name, DWORD type, const void* data, DWORD size) {
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, optionsKey, 0, KEY_SET_VALUE, &key), 0);
    EXPECT_EQ(RegSetValueExA(key, name, 0, type, static_cast<const BYTE*>(data), size), 0);
    RegCloseKey(key);
}

void setOption(const char* name, DWORD value) {
    setOption(name, REG_DWORD, &value, sizeof value);
}

// Keeps the doctor from loading a library of the system.
class MissingSystemLibrary {
  public:
    explicit MissingSystemLibrary(const char* name) {
        RegCreateKeyA(HKEY_CURRENT_USER, path, &key_);
        RegSetValueExA(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(""), 1);
    }
    ~MissingSystemLibrary() {
        RegCloseKey(key_);
        RegDeleteTreeA(HKEY_CURRENT_USER, R"(Software\Wine\AppDefaults\vok-doctor.exe)");
    }

  private:
    static constexpr char path[] = R"(Software\Wine\AppDefaults\vok-doctor.exe\DllOverrides)";
    HKEY key_ = nullptr;
};

TEST_F(DoctorTest, MissingConfigurationLibrary) {
    // One lies beside the doctor: the spooler would not see that either.
    const MovedFile moved("DEMOcfg.dll");
    expectProblem("", "configuration-missing");
}

TEST_F(DoctorTest, WrongPrefixData) {
    setPrefixData("ACME");
    const Undo undo([] { setPrefixData("DEMO"); });
    expectProblem("", "prefix-wrong");
}

TEST_F(DoctorTest, NoPrefixData) {
    setPrefixData("");
    const Undo undo([] { setPrefixData("DEMO"); });
    expectProblem("", "prefix-missing");
}

TEST_F(DoctorTest, NoCompanionFile) {
    for (const char* name : {"DEMODRAL.EXE", "DEMONEMB.EXE"}) {
        const MovedFile moved(name);
        expectProblem("", "companion-missing");
    }
}

TEST_F(DoctorTest, CompanionThatIsNoProgram) {
    const MovedFile moved("DEMONEMB.EXE");
    const std::string path = driverFolder + std::string("DEMONEMB.EXE");
    const HANDLE file =
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    CloseHandle(file);
    const Undo undo([&path] { DeleteFileA(path.c_str()); });
    expectProblem("", "companion-not-program");
}

TEST_F(DoctorTest, LogNotWritable) {
    const std::string log = R"(C:\DEMOVok.log)";
    DeleteFileA(log.c_str());
    ASSERT_NE(CreateDirectoryA(log.c_str(), nullptr), 0);
    const Undo undo([&log] { RemoveDirectoryA(log.c_str()); });
    expectProblem("", "log-not-writable");
}

TEST_F(DoctorTest, LogLocked) {
    const HANDLE mutex = CreateMutexA(nullptr, TRUE, "ZELOG_DEMOVok.log");
    const Undo undo([mutex] {
        ReleaseMutex(mutex);
        CloseHandle(mutex);
    });
    expectProblem("", "log-locked");
}

TEST_F(DoctorTest, NoUserToken) {
    const MissingSystemLibrary missing("wtsapi32");
    expectProblem(pipeRoute, "no-user-token");
}

TEST_F(DoctorTest, NoUserTokenWhereNoneIsNeededIsNoProblem) {
    const MissingSystemLibrary missing("wtsapi32");
    const Outcome outcome = doctor("");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("#no-user-token)"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, WrongSession) {
    // All programs of the test machine share one session, so the system's answer is replaced.
    const Outcome outcome =
        doctor(pipeRoute, [](HANDLE process) { loadFirst(process, IN_SESSION_TWO); });
    expectProblem(outcome, "wrong-session");
    EXPECT_NE(firstProblem(outcome.output).find("you 2"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, PipeNameTaken) {
    for (const char* companion : {VOK_DRAL_PIPE, VOK_NEMB_PIPE}) {
        const std::string name = companion + std::string(printerName);
        const HANDLE pipe =
            CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr);
        ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
        const Undo undo([pipe] { CloseHandle(pipe); });
        expectProblem(pipeRoute, "pipe-taken");
    }
}

TEST_F(DoctorTest, OptionsOffAreNoFault) {
    const Undo undo([] { doctor("--log on"); });
    doctor("--log off");
    const Outcome outcome = doctor("");
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("note     option startLog"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("#log-off)"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, MasksThatLeaveMessagesOut) {
    setOption("All", 1);
    setOption("VOK", 3);
    const Undo undo([] {
        setOption("All", 0xFFFFFFFF);
        setOption("VOK", 11);
    });
    expectProblem("", "log-masked");
}

TEST_F(DoctorTest, WrongRegistryTypes) {
    setOption("startLog", REG_SZ, "1", 2);
    const Undo undo([] { setOption("startLog", 1); });
    expectProblem("", "option-type");
}

TEST_F(DoctorTest, PrinterMissing) {
    char name[] = "Demo Printer";
    PRINTER_DEFAULTSA access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    ASSERT_NE(OpenPrinterA(name, &printer, &access), 0);
    ASSERT_NE(DeletePrinter(printer), 0);
    ClosePrinter(printer);
    const Undo undo([] { runProgram(product("vok-install.exe") + " install"); });
    expectProblem("", "printer-missing");
    const Outcome unnamed = runProgram(product("vok-doctor.exe"));
    EXPECT_NE(firstProblem(unnamed.output).find("#printer-unnamed)"), std::string::npos);
}

TEST_F(DoctorTest, DllRenamed) {
    for (const char* name : {"ACMEvok.dll", "DEMO2vok.dll"}) {
        const MovedFile renamed("DEMOvok.dll", name);
        expectProblem("", "library-renamed");
    }
}

TEST_F(DoctorTest, DllMissing) {
    const MovedFile moved("DEMOvok.dll");
    expectProblem("", "library-missing");
}

TEST_F(DoctorTest, DllOfSomebodyElse) {
    expectProblem(R"(C:\windows\system32\winspool.drv)", "library-foreign");
    expectProblem(R"(C:\no-such-folder\DEMOvok.dll)", "library-unloadable");
}

TEST_F(DoctorTest, CompanionThatDiesAtItsStart) {
    for (const char* name : {"DEMODRAL.EXE", "DEMONEMB.EXE"}) {
        const MovedFile moved(name);
        // A program that knows no such command line and ends.
        const std::string path = driverFolder + std::string(name);
        ASSERT_NE(CopyFileA((productFolder() + "/vok-install.exe").c_str(), path.c_str(), TRUE), 0);
        const Undo undo([&path] { DeleteFileA(path.c_str()); });
        expectProblem("--launch", "companion-died");
        expectProblem("--launch --spooler-session 0", "companion-died");
        endCompanions();
    }
}

TEST_F(DoctorTest, BaseKeyMissing) {
    ASSERT_EQ(RegDeleteTreeA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\DEMO\Printer)"), 0);
    const Undo undo([] {
        runProgram(product("vok-install.exe") + " install");
        doctor("--log on");
    });
    expectProblem("", "base-key-missing");
}

}  // namespace
}  // namespace vok::test
