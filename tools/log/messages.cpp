#include "messages.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace vok::log {

namespace {

using enum Step;

constexpr bool whole = true;
constexpr bool begins = false;
constexpr Side dral = Side::Dral;
constexpr Side nemb = Side::Nemb;
constexpr Side either = Side::None;
constexpr Event anyEvent = Event::None;
constexpr Event open = Event::Open;
constexpr Event page = Event::Page;
constexpr Event close = Event::Close;
constexpr Event cancel = Event::Cancel;
constexpr Route pipe = Route::Pipe;
constexpr Route window = Route::Window;
constexpr Route nine = Route::Window9x;

// Where one text begins another, the longer one comes first.
constexpr KnownText texts[] = {
    {"FriendlyName = ", begins, LaunchBegin},
    {"rc = TRUE from VOKLaunchXFiles StartJobTime=", begins, LaunchTrue},
    {"rc = FALSE from VOKLaunchXFiles", whole, LaunchFalse},
    {"The module name = ", begins, LaunchDetail},
    {"Got The File Name! File Name = ", begins, LaunchDetail},
    {"Did NOT get File Name", whole, NoModuleName},
    {"Using Pipes in StartDral", whole, RouteChosen, dral, anyEvent, pipe},
    {"Using Pipes in StartNembXP", whole, RouteChosen, nemb, anyEvent, pipe},
    {"Using Messages in StartDRALXP", whole, RouteChosen, dral, anyEvent, window},
    {"Using Messages in StartNembXP", whole, RouteChosen, nemb, anyEvent, window},
    {"Could not open the Printer. Exiting now...", whole, PrinterNotOpened},
    {"Did not find matching printer in Registry ", whole, NoPrefixData, nemb},
    {"dral title - ", begins, LaunchDetail, dral},
    {"nemb title - ", begins, LaunchDetail, nemb},
    {"The DRAL is already running", whole, Running, dral},
    {"Nemb is already running! Create Pipe regardless", whole, Running, nemb},
    {"Nemb is already running", whole, LaunchDetail, nemb},
    {"Trying to open mutex :", begins, LaunchDetail, nemb},
    {"Error Openining Mutex rc=", begins, LaunchDetail, nemb},
    {"dral path - ", begins, Path, dral},
    {"dral PATH - ", begins, Path, dral},
    {"nemb path - ", begins, Path, nemb},
    {"P2P Port. Launching App in the user context. Port = ", begins, LaunchDetail, dral},
    {"Failed to launch Dral", whole, StartFailed, dral},
    {"Launching Dlar, Path = ", begins, Launching, dral},
    {"Launching Nmeb, Path = ", begins, Launching, nemb},
    {"Dral Launched in User context. Dral HWND = ", begins, WindowAfterStart, dral},
    {"WinExec rc = 0. Dral HWND = ", begins, WindowAfterStart, dral},
    {"WinExec rc = 0. Nemb HWND = ", begins, WindowAfterStart, nemb},
    {"Return from StartDRALXP Pipes. Dral HPIPE = ", begins, PipeReady, dral},
    {"Return from StartNEMBXP Pipes. Nemb HPIPE = ", begins, PipeReady, nemb},
    {"Nemb HPIPE from CreateNamedPipe = ", begins, LaunchDetail, nemb},
    {"Searching Dral Title = ", begins, RouteChosen, dral, anyEvent, nine},
    {"hDRAL = ", begins, Window9xFound, dral, anyEvent, nine},
    {"hNEMB =  ", begins, Window9xFound, nemb, anyEvent, nine},
    {"FindXWindow className = ", begins, LaunchDetail},
    {"FindXWindow = ", begins, Window9xSearched},
    {"The App Name = ", begins, CreateProcess},
    {"CreateProcess Failed! The error = ", begins, CreateProcessFailed},
    {"The command line is ", begins, LaunchDetail},
    {"WTSQueryUserToken rc=", begins, UserToken},
    {"Launching via WinExec", whole, StartByWinExec},
    {"Calling CPAU", whole, StartAsUser},
    {"CPAU Failed lasterror=", begins, AsUserFailed},
    {"VokData->hDRALProc = ", begins, LaunchDetail, dral},
    {"VokData->hNEMBProc = ", begins, LaunchDetail, nemb},
    {"VokData->hDRALThread  = ", begins, LaunchDetail, dral},
    {"VokData->hNEMBThread  = ", begins, LaunchDetail, nemb},

    {"SM_OPENJOB. Dral HPIPE = ", begins, Asked, dral, open, pipe},
    {"SM_STARTPAGE. Dral HPIPE = ", begins, Asked, dral, page, pipe},
    {"SM_CLOSEJOB. Dral HPIPE = ", begins, Asked, dral, close, pipe},
    {"SM_CANCELJOB. Dral HPIPE = ", begins, Asked, dral, cancel, pipe},
    {"SM_OPENJOB. Dral HWND = ", begins, Asked, dral, open, window},
    {"SM_CLOSEJOB. Dral HWND = ", begins, Asked, dral, close, window},
    {"SM_CANCELJOB. Dral HWND = ", begins, Asked, dral, cancel, window},
    {"SM_OPENJOB. Nemb HPIPE = ", begins, Asked, nemb, open, pipe},
    {"SM_CLOSEJOB. Nemb HPIPE = ", begins, Asked, nemb, close, pipe},
    {"SM_CANCELJOB. Nemb HPIPE = ", begins, Asked, nemb, cancel, pipe},
    {"SM_OPENJOB. Nemb HWND = ", begins, Asked, nemb, open, window},
    {"SM_CLOSEJOB. Nemb HWND = ", begins, Asked, nemb, close, window},
    {"SM_CANCELJOB. Nemb HWND = ", begins, Asked, nemb, cancel, window},
    {"SM_STARTPAGE/ENDPAGE. Nemb HPIPE = ", begins, AskedAfter, nemb, page, pipe},
    {"SM_STARTPAGE/ENDPAGE. Nemb HWND = ", begins, AskedAfter, nemb, page, window},
    {"SM_STARTPAGE/ENDPAGE default. SendMessage rc = ", begins, Reply, nemb, page, nine},
    {"SM_OPENJOB", whole, Asked, either, open, nine},
    {"SM_STARTPAGE", whole, Asked, dral, page, nine},
    {"SM_CLOSEJOB", whole, Asked, either, close, nine},
    {"SM_CANCELJOB", whole, Asked, either, cancel, nine},
    {"OPENJOB SendMessage rc = ", begins, Reply, either, open},
    {"CLOSEJOB SendMessage rc = ", begins, Reply, either, close},
    {"CANCELJOB SendMessage rc = ", begins, Reply, either, cancel},
    {"STARTPAGE SendMessage rc = ", begins, Reply, dral, page},
    {"STARTPAGE/ENDPAGE SendMessage rc = ", begins, Reply, nemb, page, window},
    {"OPENJOB WriteDralPipe. rc = ", begins, Reply, dral, open, pipe},
    {"STARTPAGE WriteDralPipe. rc = ", begins, Reply, dral, page, pipe},
    {"CLOSEJOB WriteDralPipe rc = ", begins, Reply, dral, close, pipe},
    {"CANCELJOB WriteDralPipe. rc = ", begins, Reply, dral, cancel, pipe},
    {"OPENJOB WriteNembPipe rc = ", begins, Reply, nemb, open, pipe},
    {"STARTPAGE/ENDPAGE WriteNembPipe rc = ", begins, Reply, nemb, page, pipe},
    {"CLOSEJOB WriteNembPipe rc = ", begins, Reply, nemb, close, pipe},
    {"CANCELJOB WriteNembPipe rc = ", begins, Reply, nemb, cancel, pipe},
    {"Inside CLOSE JOB loop", whole, Loop, dral, close, nine},
    {"Inside CANCEL JOB loop", whole, Loop, dral, cancel, nine},
    {"CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, dral, close, nine},
    {"CANCELJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, dral, cancel, nine},
    {"Null Window Handle in SendDralMsgXP", whole, NoHandle, dral, anyEvent, window},
    {"Null Window Handle in SendNembMsg", whole, NoHandle, nemb, anyEvent, window},
    {"Waiting for Dral to finish initialization. Sleeping", whole, StartupWait, dral},
    {"Waiting for nemb to finish initialization (sleeping 1 minute)", whole, StartupWait, nemb},
    {"Wait timed out while waiting for Dral initialization to complete", whole, StartupTimeout,
     dral},
    {"Wait failed while waiting for Dral initialization to complete", whole, StartupWaitFailed,
     dral},
    {"Finished waiting. Attempting FindWindow again...", whole, StartupWaitEnd, dral},
    {"Finished waiting. Attempting FindWindow again", whole, StartupWaitEnd, nemb},
    {"Null Dral Handle, No Messages can be send", whole, NoWindow, dral},
    {"Null Nemb Window Handle", whole, NoWindow, nemb},
    {"Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen, dral, open,
     nine},
    {"OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT", whole, NotOpen, dral, close,
     pipe},
    {"OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen},
    {"OPENJOB flag was NOT set in epDoc", whole, NotOpen, nemb, close, pipe},
    {"ConnectNamedPipe failed! GetLastError = ", begins, NotConnected},
    {"Invalid VokData or Pipe Handle ", whole, NoRecord, dral, anyEvent, pipe},
    {"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT", whole, NoRecord, nemb, anyEvent, pipe},
    {"VokData is Null. rc = YESPRINT", whole, NoRecord, either, anyEvent, nine},
    {"Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB", whole, Trail, dral, close},
    {"Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB", whole, Trail, dral, cancel},
    {"We did not get WAITPRINT in CLOSEJOB...Close PIPE", whole, Trail, dral, close},
    {"We did not get WAITPRINT in CANCELJOB...Close PIPE", whole, Trail, dral, cancel},
    {"Sleep 1000", whole, Pause, dral},
    {"Close PIPENon Root Session - EndJobTime=", begins, JobEndTime, nemb, close, pipe},
    {"Close PIPE. rc = TRUE", whole, Trail, nemb, cancel, pipe},
    {"Close PIPE. rc = YESPRINT", whole, Trail, nemb, close, pipe},
    {"The Message Id = ", begins, UnknownEvent, dral},
    {"Default. WARNING! We should not be here. rc = YESPRINT", whole, Trail, dral},
    {"Default. WARNING! We Should not be here. rc = YESPRINT", whole, Trail, dral},
    {"FN=", begins, AnyMessage},
    {"Invalid input", whole, AnyMessageInvalid},

    {"Failed to Loadlibrary, path= ", begins, LibraryNotLoaded},
    {"Module::UnLoad() | Failed to Unloadlibrary, path = ", begins, LibraryNotUnloaded},
    {"Module::GetPrinterDriverDirectory() fails, ret = ", begins, NoDriverDirectory},
    {"Module::GetPrinterPath(), ", begins, LibraryDetail},
    {"RegistryKey64() exception error=", begins, RegistryFailed},
    {"Win32(", begins, LibraryException},
};

constexpr std::string_view withoutBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::span<const KnownText> knownTexts() {
    return texts;
}

Message recognise(std::string_view message) {
    // The library traces nothing but names of functions.
    if (message.starts_with('+') || message.starts_with('-')) {
        const std::string_view name = message.substr(1, message.find(' ') - 1);
        if (!name.empty()) {
            return {KnownText{{}, begins, message[0] == '+' ? TraceEnter : TraceExit}, name};
        }
    }
    for (const KnownText& known : texts) {
        if (message.starts_with(withoutBlanks(known.start)) &&
            (known.exact ? withoutBlanks(message) == withoutBlanks(known.start)
                         : message.size() + 1 >= known.start.size())) {
            const std::size_t used = std::min(message.size(), known.start.size());
            return {known, message.substr(used)};
        }
    }
    return {};
}

}  // namespace vok::log
