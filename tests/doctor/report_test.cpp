// What the doctor prints, what it leaves as it was, and what it says when it is misused.
#include "report.h"

#include <string>

#include "doctor/doctor_machine.h"
#include "live/machine_state.h"

namespace vok::test {
namespace {

TEST(DoctorPages, EveryAdviceHasItsAnchor) {
    const std::string page = fileText(VOK_SOURCE_FOLDER "/docs/troubleshooting.md");
    for (const doctor::Advice& advice : doctor::advices) {
        const std::string anchor = advice.anchor;
        EXPECT_NE(page.find("<a id=\"" + anchor + "\"></a>"), std::string::npos) << anchor;
    }
}

TEST(DoctorCause, IsTheFirstOfTheWorst) {
    doctor::Report report;
    doctor::Step(report, "system").ok("here");
    doctor::Step(report, "option startLog").note("log-off", "0");
    EXPECT_TRUE(report.cause().starts_with("no cause found: ")) << report.cause();
    doctor::Step(report, "route").warn("blank-in-path", "a b");
    EXPECT_TRUE(
        report.cause().starts_with("no certain cause found; a possible one of jobs whose "
                                   "companions are not asked: route: a b -> "))
        << report.cause();
    const auto expectMost = [&report](const std::string& step) {
        EXPECT_TRUE(report.cause().starts_with("most likely cause of ")) << report.cause();
        EXPECT_NE(report.cause().find(": " + step + ": "), std::string::npos) << report.cause();
    };
    doctor::Step(report, "log").problem("log-not-writable", "no");
    expectMost("log");
    doctor::Step(report, "queue").problem("job-stuck", "stuck");
    expectMost("queue");
    doctor::Step(report, "file").problem("companion-missing", "gone");
    doctor::Step(report, "other file").problem("companion-missing", "gone");
    expectMost("file");
    doctor::Step(report, "window").problem("window-silent", "silent");
    doctor::Step(report, "another file").problem("companion-missing", "gone");
    expectMost("window");
    EXPECT_TRUE(report.text().ends_with(report.cause() + "\n"));
}

TEST_F(DoctorTest, ChangesNothing) {
    const auto state = [] {
        State all = registryBelow(HKEY_LOCAL_MACHINE, "SOFTWARE");
        all.merge(registryBelow(HKEY_LOCAL_MACHINE, R"(SYSTEM\CurrentControlSet\Control)"));
        all.merge(registryBelow(HKEY_CURRENT_USER, "Software"));
        all.merge(filesIn("C:"));
        all.merge(filesIn(driverFolder));
        return all;
    };
    const State before = state();
    EXPECT_GT(before.size(), 1000u);
    EXPECT_EQ(doctor("").status, 0u);
    EXPECT_EQ(doctor("--spooler-session 0 --json").status, 0u);
    EXPECT_EQ(state(), before);
}

TEST_F(DoctorTest, ChangesNothingWhereNothingIsInstalled) {
    ASSERT_EQ(RegDeleteTreeA(HKEY_LOCAL_MACHINE, optionsKey), 0);
    const Undo undo([] { doctor("--log on"); });
    const State before = registryBelow(HKEY_LOCAL_MACHINE, R"(SOFTWARE\DEMO)");
    EXPECT_EQ(doctor("").status, 0u);
    EXPECT_EQ(registryBelow(HKEY_LOCAL_MACHINE, R"(SOFTWARE\DEMO)"), before);
}

TEST_F(DoctorTest, FindsThePrinterOfTheModelByItself) {
    const Outcome outcome = runProgram(product("vok-doctor.exe"));
    EXPECT_EQ(outcome.status, 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("Demo Printer, print processor DEMOproc"), std::string::npos)
        << outcome.output;
}

TEST_F(DoctorTest, TurnsTheNumbersOnWithTheLog) {
    doctor("--log default");
    const Outcome outcome = doctor("--log on");
    for (const char* line :
         {"option Proc_Id_In_Header    set to 0x00000001: lines with the process",
          "option Thread_Id_In_Header  set to 0x00000001: lines with the thread",
          "option Proc_Id_In_Header    0x00000001"}) {
        EXPECT_NE(outcome.output.find(line), std::string::npos) << outcome.output;
    }
}

TEST_F(DoctorTest, SetsTheOptionsOfTheLog) {
    const Undo undo([] {
        doctor("--log default");
        doctor("--log on");
    });
    EXPECT_EQ(doctor("--log all").status, 0u);
    const Outcome all = doctor("");
    for (const char* line : {"option VOK                  0xFFFFFFFF",
                             "option Thread_Id_In_Header  0x00000001: lines with the thread"}) {
        EXPECT_NE(all.output.find(line), std::string::npos) << all.output;
    }
    EXPECT_EQ(doctor("--log default").status, 0u);
    const Outcome standard = doctor("");
    for (const char* line :
         {"option startLog             0x00000000: logging is off",
          "option VOK                  0x00000001", "option Thread_Id_In_Header  0x00000000"}) {
        EXPECT_NE(standard.output.find(line), std::string::npos) << standard.output;
    }
}

TEST_F(DoctorTest, LaunchReachesBothCompanionsOnBothRoutes) {
    const Outcome messages = doctor("--launch");
    EXPECT_EQ(messages.status, 0u) << messages.output;
    EXPECT_NE(messages.output.find("Using Messages in StartDRALXP"), std::string::npos);
    EXPECT_NE(messages.output.find("DEMODRAL.EXE has its window after "), std::string::npos)
        << messages.output;
    EXPECT_NE(messages.output.find("DEMONEMB.EXE has its window after "), std::string::npos);
    const Outcome pipes = doctor("--launch --spooler-session 0");
    EXPECT_EQ(pipes.status, 0u) << pipes.output;
    EXPECT_NE(pipes.output.find("Nemb is already running! Create Pipe regardless"),
              std::string::npos);
    EXPECT_NE(pipes.output.find("DEMODRAL.EXE has opened its pipe after "), std::string::npos)
        << pipes.output;
    const Outcome running = doctor("");
    EXPECT_NE(running.output.find("'DEMODRAL - Demo Printer' and 'DRAL Hidden Window-Demo "
                                  "Printer' are there"),
              std::string::npos)
        << running.output;
    endCompanions();
}

TEST_F(DoctorTest, MisuseIsSaid) {
    for (const char* arguments : {"--bad", "--log loud", "--log", "a.dll b.dll",
                                  "--spooler-session one", "--spooler-session -1"}) {
        const Outcome outcome = doctor(arguments);
        EXPECT_EQ(outcome.status, 2u) << arguments;
        EXPECT_NE(outcome.output.find("Exit status: 0 no problem"), std::string::npos);
    }
}

TEST_F(DoctorTest, LostOutputIsNoSuccess) {
    for (const char* arguments : {" --help", "", " --json"}) {
        const Outcome outcome = runWithoutOutput(product("vok-doctor.exe") + arguments);
        EXPECT_EQ(outcome.status, 2u) << arguments;
        EXPECT_NE(outcome.output.find("can't write to the standard output"), std::string::npos);
    }
}

}  // namespace
}  // namespace vok::test
