// Each failure that the library's lines can show is found, at its line, and named first.

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "log_writer.h"
#include "support.h"

namespace vok::test {
namespace {

using nlohmann::json;

struct Failure {
    const char* message;
    const char* line;  // a part of the line that it is found at; empty for the job's last one
    std::function<void(LogWriter&)> write;
};

constexpr const char* notReached = "rc = FALSE from VOKLaunchXFiles";

void pipeLaunchThen(LogWriter& log, const std::function<void()>& rest) {
    log.launchByPipe("P", 0xA0, 0xA4);
    rest();
    log.pipeEvent("Dral", "CLOSEJOB", 0xA0, "YESPRINT");
    log.pipeEvent("Nemb", "CLOSEJOB", 0xA4, "YESPRINT");
}

void detailAt(LogWriter& log, const char* entry, std::initializer_list<const char*> texts) {
    log.trace(entry);
    for (const char* text : texts) {
        log.detail(text);
    }
}

std::vector<Failure> launchFailures() {
    return {
        {"log-printer-not-opened", "Could not open",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
             log.detail("Could not open the Printer. Exiting now...");
             log.detail(notReached);
         }},
        {"log-no-prefix-data", "Did not find matching",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Messages");
             log.detail("dral title - DEMODRAL - P");
             log.beginNemb("Messages");
             log.detail("Did not find matching printer in Registry ");
             log.detail(notReached);
         }},
        {"log-start-as-user-failed", "CPAU Failed",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
             log.detail("dral path - DEMODRAL.EXE");
             log.startAsUser("Dral");
             log.detail("Calling CPAU");
             log.detail("CPAU Failed lasterror=2");
             log.detail("VokData->hDRALProc = ");
             log.detail("Return from StartDRALXP Pipes. Dral HPIPE = ");
             log.detail(notReached);
         }},
        {"log-no-environment", "Return from StartDRALXP",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
             log.detail("dral path - DEMODRAL.EXE");
             log.startAsUser("Dral");
             log.detail("Return from StartDRALXP Pipes. Dral HPIPE = ");
             log.detail(notReached);
         }},
        {"log-companion-not-started", "Return from StartDRALXP",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
             log.detail("dral path - DEMODRAL.EXE");
             log.startAsUser("Dral", false);
             log.detail("Launching via WinExec");
             log.detail("Return from StartDRALXP Pipes. Dral HPIPE = ");
             log.detail(notReached);
         }},
        {"log-companion-not-started", notReached,
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Messages");
             log.detail("dral title - DEMODRAL - P");
             log.beginNemb("Messages");
             log.detail(notReached);
         }},
        {"log-pipe-not-made", "HPIPE = 0xFFFF",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
             log.detail("The DRAL is already running");
             log.detail("Return from StartDRALXP Pipes. Dral HPIPE = 0xFFFFFFFFFFFFFFFF");
             log.detail(notReached);
         }},
        {"log-start-failed", "CreateProcess Failed",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.detail("hDRAL = ");
             log.detail("The App Name = C:\\windows\\system\\DEMOdral.exeThe Cmd Line =  SPLPP");
             log.detail("CreateProcess Failed! The error = 2");
             log.detail(notReached);
         }},
        {"log-window-not-found", "FindWindow attempts = 200",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.detail("hDRAL = ");
             log.detail("FindXWindow = FindWindow attempts = 200");
             log.detail(notReached);
         }},
        {"log-launch-failed", notReached,
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.detail(notReached);
         }},
        {"log-launch-unfinished", "Using Pipes",
         [](LogWriter& log) {
             log.beginLaunch("P");
             log.beginDral("Pipes");
         }},
    };
}

std::vector<Failure> eventFailures() {
    return {
        {"log-not-connected", "ConnectNamedPipe failed",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendDralMsg",
                          {"SM_OPENJOB. Dral HPIPE = 0x00000000000000A0",
                           "ConnectNamedPipe failed! GetLastError = 232rc = YESPRINT"});
             });
         }},
        {"log-refused", "OPENJOB WriteDralPipe. rc = NOPRINT",
         [](LogWriter& log) { log.pipeJob("P", 0xA0, 0, "NOPRINT"); }},
        {"log-not-handed-on", "STARTPAGE/ENDPAGE WriteNembPipe rc = NOPRINT",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] { log.pipeEvent("Nemb", "STARTPAGE", 0xA4, "NOPRINT"); });
         }},
        {"log-no-answer", "SM_STARTPAGE. Dral",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendDralMsg", {"SM_STARTPAGE. Dral HPIPE = 0x00000000000000A0"});
             });
         }},
        {"log-no-window", "Null Dral Handle",
         [](LogWriter& log) {
             log.launchByWindow("P", 0, 0x62);
             detailAt(log, "VOKSendDralMsg",
                      {"Null Window Handle in SendDralMsgXP",
                       "Null Dral Handle, No Messages can be send"});
         }},
        {"log-startup-timeout", "Wait timed out",
         [](LogWriter& log) {
             log.launchByWindow("P", 0, 0x62);
             detailAt(log, "VOKSendDralMsg",
                      {"Null Window Handle in SendDralMsgXP",
                       "Waiting for Dral to finish initialization. Sleeping",
                       "Wait timed out while waiting for Dral initialization to complete",
                       "Finished waiting. Attempting FindWindow again...",
                       "SM_OPENJOB. Dral HWND = 0x0000000000000048",
                       "OPENJOB SendMessage rc = YESPRINT"});
         }},
        {"log-startup-wait-failed", "Wait failed",
         [](LogWriter& log) {
             log.launchByWindow("P", 0, 0x62);
             detailAt(log, "VOKSendDralMsg",
                      {"Null Window Handle in SendDralMsgXP",
                       "Wait failed while waiting for Dral initialization to complete"});
         }},
        {"log-no-handle", "Invalid VokData",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendNembMsg",
                          {"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT"});
             });
         }},
        {"log-job-silent", "rc = TRUE", [](LogWriter& log) { log.launchByPipe("P", 0xA0, 0xA4); }},
        {"log-still-waiting", "",
         [](LogWriter& log) {
             log.launchByWindow("P", 0x48, 0x62);
             log.windowEvent("Dral", "CLOSEJOB", 0x48, "WAITPRINT");
         }},
    };
}

std::vector<Failure> warnings() {
    return {
        {"log-not-open", "OPENJOB flag was NOT set",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendNembMsg",
                          {"SM_OPENJOB. Nemb HPIPE = 0x00000000000000A4",
                           "OPENJOB flag was NOT set in epDoc. rc = YESPRINT"});
             });
         }},
        {"log-unusual-reply", "STARTPAGE WriteDralPipe. rc = 7",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] { log.pipeEvent("Dral", "STARTPAGE", 0xA0, "7"); });
         }},
        {"log-unknown-event", "The Message Id = 1136",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendDralMsg",
                          {"The Message Id = 1136",
                           "Default. WARNING! We should not be here. rc = YESPRINT "});
             });
         }},
        {"log-invalid-message", "Invalid input",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendMsgEx",
                          {"FN=P hXfile=0 viaPipe=1 dwMsg=5 data=0 length=0", "Invalid input"});
             });
         }},
        {"log-slow-answer", "OPENJOB WriteDralPipe",
         [](LogWriter& log) {
             pipeLaunchThen(log, [&] {
                 detailAt(log, "VOKSendDralMsg", {"SM_OPENJOB. Dral HPIPE = 0x00000000000000A0"});
                 log.wait(10000);
                 log.detail("OPENJOB WriteDralPipe. rc = YESPRINT");
             });
         }},
        {"log-module-name", "Did NOT get File Name",
         [](LogWriter& log) {
             pipeLaunchThen(log, [] {});
             log.beginLaunch("P");
             log.detail("Did NOT get File Name");
             log.detail("rc = TRUE from VOKLaunchXFiles StartJobTime=1");
             log.windowEvent("Dral", "CLOSEJOB", 0x48, "YESPRINT");
         }},
    };
}

std::string lineAt(const std::string& text, std::size_t number) {
    std::size_t start = 0;
    for (std::size_t i = 1; i < number; ++i) {
        start = text.find('\n', start) + 1;
    }
    return text.substr(start, text.find('\n', start) - start);
}

void expectFirst(const std::vector<Failure>& failures, const char* weight) {
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.message);
        std::string text;
        LogWriter log([&](std::string_view line) { text += line; });
        failure.write(log);
        // The log goes on for longer than anybody waits.
        log.wait(20000);
        log.record("DEMODRAL", "a line of a companion");
        const json jobs = accountOf(text)["jobs"];
        ASSERT_FALSE(jobs.empty());
        const json& first = jobs.back()["firstFailure"];
        ASSERT_FALSE(first.is_null()) << jobs.back();
        EXPECT_EQ(first["message"], failure.message) << jobs.back()["findings"];
        EXPECT_EQ(first["weight"], weight);
        EXPECT_EQ(first["page"], std::string("docs/troubleshooting.md#") + failure.message);
        EXPECT_NE(lineAt(text, first["line"]).find(failure.line), std::string::npos)
            << lineAt(text, first["line"]);
    }
}

TEST(Failures, OfALaunchAreNamed) {
    expectFirst(launchFailures(), "problem");
}

TEST(Failures, OfAnEventAreNamed) {
    expectFirst(eventFailures(), "problem");
}

TEST(Failures, ThatDidNotStopTheJobAreWarnings) {
    expectFirst(warnings(), "warning");
}

TEST(Failures, OfTheLibraryAreOfTheWholeLog) {
    std::string text;
    LogWriter log([&](std::string_view line) { text += line; });
    log.detail("Failed to Loadlibrary, path= C:\\DEMOcfg.dllret=126");
    log.detail("Module::UnLoad() | Failed to Unloadlibrary, path = DEMOcfg.dllret=5");
    log.detail("Module::GetPrinterDriverDirectory() fails, ret = 1722");
    log.detail("Win32(6Invalid handle.");
    log.record("XFilesLogger::getOption()", "RegistryKey64() exception error=5");
    std::vector<std::string> names;
    const json account = accountOf(text);
    for (const json& finding : account["summary"]["findings"]) {
        names.push_back(finding["message"]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"log-library-not-loaded", "log-library-not-unloaded",
                                               "log-registry", "log-driver-directory",
                                               "log-library-exception"}));
    EXPECT_TRUE(account["jobs"].empty());
}

}  // namespace
}  // namespace vok::test
