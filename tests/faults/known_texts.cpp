#include "faults/known_texts.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "sim/expect.h"

namespace vok::test {
bool matches(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern.front() != '*') {
        const bool fits =
            !text.empty() && (pattern.front() == '?' || pattern.front() == text.front());
        return fits && matches(text.substr(1), pattern.substr(1));
    }
    for (size_t skipped = 0; skipped <= text.size(); ++skipped) {
        if (matches(text.substr(skipped), pattern.substr(1))) {
            return true;
        }
    }
    return false;
}

namespace {

constexpr std::string_view messages[] = {
    "FriendlyName = *, PortName = *",
    "rc = TRUE from VOKLaunchXFiles StartJobTime=*",
    "rc = FALSE from VOKLaunchXFiles",
    "WTSQueryUserToken rc=* lastError=* token handle=*",
    "The command line is *",
    "Launching via WinExec",
    "Calling CPAU",
    "CPAU Failed lasterror=*",
    "VokData->hDRALProc = *",
    "VokData->hDRALThread  = *",
    "VokData->hNEMBProc = *",
    "VokData->hNEMBThread  = *",
    "The App Name = *The Cmd Line = *",
    "CreateProcess Failed! The error = *",
    "The module name = *",
    "Got The File Name! File Name = \\*",
    "Did NOT get File Name",
    "FindXWindow className = *FindXWindow WindowName = *",
    "FindXWindow = *FindWindow attempts = *",
    "Trying to open mutex :Global\\*",
    "Nemb is already running",
    "Error Openining Mutex rc=*",
    "Could not open the Printer. Exiting now...",
    "Using Pipes in StartNembXP",
    "Using Messages in StartNembXP",
    "nemb title - *",
    "Nemb is already running! Create Pipe regardless",
    "nemb path - *",
    "Launching Nmeb, Path = *",
    "Nemb HPIPE from CreateNamedPipe = *",
    "Return from StartNEMBXP Pipes. Nemb HPIPE = *",
    "Did not find matching printer in Registry ",
    "WinExec rc = 0. Nemb HWND = *",
    "hNEMB =  *",
    "Using Pipes in StartDral",
    "Using Messages in StartDRALXP",
    "dral title - *",
    "The DRAL is already running",
    "dral path - *",
    "dral PATH - *",
    "Launching Dlar, Path = *",
    "Return from StartDRALXP Pipes. Dral HPIPE = *",
    "P2P Port. Launching App in the user context. Port = *",
    "Dral Launched in User context. Dral HWND = *",
    "Failed to launch Dral",
    "WinExec rc = 0. Dral HWND = *",
    "Searching Dral Title = *",
    "hDRAL = *",
    "Null Window Handle in SendNembMsg",
    "Waiting for nemb to finish initialization (sleeping 1 minute)",
    "Finished waiting. Attempting FindWindow again",
    "Null Nemb Window Handle",
    "SM_OPENJOB. Nemb HWND = *",
    "SM_CLOSEJOB. Nemb HWND = *",
    "SM_CANCELJOB. Nemb HWND = *",
    "SM_STARTPAGE/ENDPAGE. Nemb HWND = *",
    "OPENJOB SendMessage rc = *",
    "CLOSEJOB SendMessage rc = *",
    "CANCELJOB SendMessage rc = *",
    "STARTPAGE SendMessage rc = *",
    "STARTPAGE/ENDPAGE SendMessage rc = *",
    "OPENJOB flag was NOT set in epDoc. rc = YESPRINT",
    "OPENJOB flag was NOT set in epDoc",
    "Invalid VokData or Nemb Pipe Handle. rc = YESPRINT",
    "SM_OPENJOB. Nemb HPIPE = *",
    "SM_CLOSEJOB. Nemb HPIPE = *",
    "SM_CANCELJOB. Nemb HPIPE = *",
    "SM_STARTPAGE/ENDPAGE. Nemb HPIPE = *",
    "OPENJOB WriteNembPipe rc = *",
    "CLOSEJOB WriteNembPipe rc = *",
    "CANCELJOB WriteNembPipe rc = *",
    "STARTPAGE/ENDPAGE WriteNembPipe rc = *",
    "ConnectNamedPipe failed! GetLastError = *rc = YESPRINT",
    "Close PIPENon Root Session - EndJobTime=*",
    "Close PIPE. rc = YESPRINT",
    "Close PIPE. rc = TRUE",
    "VokData is Null. rc = YESPRINT",
    "SM_OPENJOB",
    "SM_CLOSEJOB",
    "SM_STARTPAGE",
    "SM_CANCELJOB",
    "SM_STARTPAGE/ENDPAGE default. SendMessage rc = *",
    "Null Window Handle in SendDralMsgXP",
    "Waiting for Dral to finish initialization. Sleeping",
    "Wait timed out while waiting for Dral initialization to complete",
    "Wait failed while waiting for Dral initialization to complete",
    "Finished waiting. Attempting FindWindow again...",
    "Null Dral Handle, No Messages can be send",
    "SM_OPENJOB. Dral HWND = *",
    "SM_CLOSEJOB. Dral HWND = *",
    "SM_CANCELJOB. Dral HWND = *",
    "Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB",
    "Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB",
    "Sleep 1000",
    "Sleep 1000 ",
    "The Message Id = *",
    "Default. WARNING! We should not be here. rc = YESPRINT",
    "Default. WARNING! We should not be here. rc = YESPRINT ",
    "Default. WARNING! We Should not be here. rc = YESPRINT",
    "Invalid VokData or Pipe Handle ",
    "SM_OPENJOB. Dral HPIPE = *",
    "SM_CLOSEJOB. Dral HPIPE = *",
    "SM_STARTPAGE. Dral HPIPE = *",
    "SM_CANCELJOB. Dral HPIPE = *",
    "OPENJOB WriteDralPipe. rc = *",
    "CLOSEJOB WriteDralPipe rc = *",
    "STARTPAGE WriteDralPipe. rc = *",
    "CANCELJOB WriteDralPipe. rc = *",
    "We did not get WAITPRINT in CLOSEJOB...Close PIPE",
    "We did not get WAITPRINT in CANCELJOB...Close PIPE",
    "OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT",
    "Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT",
    "Inside CLOSE JOB loop",
    "CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000",
    "Inside CANCEL JOB loop",
    "CANCELJOB SendMessage equals WAITPRINT. Sleep 1000",
    "FN=* hXfile=* viaPipe=* dwMsg=* data=* length=*",
    "Invalid input",
    "Module::GetPrinterDriverDirectory() fails, ret = *",
    "Module::GetPrinterPath(), *",
    "Failed to Loadlibrary, path= *ret=*",
    "Module::UnLoad() | Failed to Unloadlibrary, path = *ret=*",
    "Win32(*",
    "",  // the text of a failure without a code
};

constexpr std::string_view traced[] = {
    "VOKLaunchXFiles", "VOKSendDralMsg", "VOKSendNembMsg", "VOKSendMsgEx",       "StartDRALXP",
    "StartNEMBXP",     "StartNEMB9X",    "LaunchProgram",  "FindOutSessionInfo", "LaunchXFile",
    "SendDRALMsgXP",   "SendDRALMsg9X",  "SendNEMBMsgXP",  "SendNEMBMsg9X",      "sendMsgEx"};

// Without its name when the options turned it on only after the name was chosen.
bool isTrace(std::string_view message) {
    if (!message.starts_with('+') && !message.starts_with('-')) {
        return false;
    }
    const std::string_view name = message.substr(1);
    return name.empty() ||
           std::find(std::begin(traced), std::end(traced), name) != std::end(traced);
}

bool isMessage(std::string_view message) {
    return isTrace(message) ||
           std::any_of(std::begin(messages), std::end(messages),
                       [&](std::string_view pattern) { return matches(message, pattern); });
}

}  // namespace

bool isKnownLine(const std::string& line) {
    constexpr std::string_view category = "VOK        ";
    const std::string text = withoutClock(line);
    return text.size() != line.size() && text.starts_with(category) &&
           text.find_first_of("\r\n") == std::string::npos &&
           isMessage(std::string_view(text).substr(category.size()));
}

bool isKnownCriticalLine(const std::string& line) {
    const std::string text = withoutClock(line);
    return text.size() != line.size() &&
           (matches(text, "XFilesLogger::getOption() RegistryKey64() exception error=*") ||
            matches(text, "XFilesLogger::CreateInstance() RegistryKey64() exception error=*"));
}

}  // namespace vok::test
