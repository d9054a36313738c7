#include "messages.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace vok::log {

namespace {

using enum Step;

constexpr bool whole = true;
constexpr bool begins = false;
using Event::Open, Event::Page, Event::Close, Event::Cancel;
using Route::Pipe, Route::Window;
using Side::Dral, Side::Nemb;
constexpr Side either = Side::None;
constexpr Event anyEvent = Event::None;
constexpr Route nine = Route::Window9x;

// Where one text begins another, the longer one comes first.
constexpr KnownText texts[] = {
    {"FriendlyName = ", begins, LaunchBegin},
    {"rc = TRUE from VOKLaunchXFiles StartJobTime=", begins, LaunchTrue},
    {"rc = FALSE from VOKLaunchXFiles", whole, LaunchFalse},
    {"The module name = ", begins, LaunchDetail},
    {"Got The File Name! File Name = ", begins, LaunchDetail},
    {"Did NOT get File Name", whole, NoModuleName},
    {"Using Pipes in StartDral", whole, RouteChosen, Dral, anyEvent, Pipe},
    {"Using Pipes in StartNembXP", whole, RouteChosen, Nemb, anyEvent, Pipe},
    {"Using Messages in StartDRALXP", whole, RouteChosen, Dral, anyEvent, Window},
    {"Using Messages in StartNembXP", whole, RouteChosen, Nemb, anyEvent, Window},
    {"Could not open the Printer. Exiting now...", whole, PrinterNotOpened},
    {"Did not find matching printer in Registry ", whole, NoPrefixData, Nemb},
    {"dral title - ", begins, LaunchDetail, Dral},
    {"nemb title - ", begins, LaunchDetail, Nemb},
    {"The DRAL is already running", whole, Running, Dral},
    {"Nemb is already running! Create Pipe regardless", whole, Running, Nemb},
    {"Nemb is already running", whole, LaunchDetail, Nemb},
    {"Trying to open mutex :", begins, LaunchDetail, Nemb},
    {"Error Openining Mutex rc=", begins, LaunchDetail, Nemb},
    {"dral path - ", begins, Path, Dral},
    {"dral PATH - ", begins, Path, Dral},
    {"nemb path - ", begins, Path, Nemb},
    {"P2P Port. Launching App in the user context. Port = ", begins, LaunchDetail, Dral},
    {"Failed to launch Dral", whole, StartFailed, Dral},
    {"Launching Dlar, Path = ", begins, Launching, Dral},
    {"Launching Nmeb, Path = ", begins, Launching, Nemb},
    {"Dral Launched in User context. Dral HWND = ", begins, WindowAfterStart, Dral},
    {"WinExec rc = 0. Dral HWND = ", begins, WindowAfterStart, Dral},
    {"WinExec rc = 0. Nemb HWND = ", begins, WindowAfterStart, Nemb},
    {"Return from StartDRALXP Pipes. Dral HPIPE = ", begins, PipeReady, Dral},
    {"Return from StartNEMBXP Pipes. Nemb HPIPE = ", begins, PipeReady, Nemb},
    {"Nemb HPIPE from CreateNamedPipe = ", begins, LaunchDetail, Nemb},
    {"Searching Dral Title = ", begins, RouteChosen, Dral, anyEvent, nine},
    {"hDRAL = ", begins, Window9xFound, Dral, anyEvent, nine},
    {"hNEMB =  ", begins, Window9xFound, Nemb, anyEvent, nine},
    {"FindXWindow className = ", begins, LaunchDetail},
    {"FindXWindow = ", begins, Window9xSearched},
    {"The App Name = ", begins, CreateProcess},
    {"CreateProcess Failed! The error = ", begins, CreateProcessFailed},
    {"The command line is ", begins, LaunchDetail},
    {"WTSQueryUserToken rc=", begins, UserToken},
    {"Launching via WinExec", whole, StartByWinExec},
    {"Calling CPAU", whole, StartAsUser},
    {"CPAU Failed lasterror=", begins, AsUserFailed},
    {"VokData->hDRALProc = ", begins, LaunchDetail, Dral},
    {"VokData->hNEMBProc = ", begins, LaunchDetail, Nemb},
    {"VokData->hDRALThread  = ", begins, LaunchDetail, Dral},
    {"VokData->hNEMBThread  = ", begins, LaunchDetail, Nemb},

    {"SM_OPENJOB. Dral HPIPE = ", begins, Asked, Dral, Open, Pipe},
    {"SM_STARTPAGE. Dral HPIPE = ", begins, Asked, Dral, Page, Pipe},
    {"SM_CLOSEJOB. Dral HPIPE = ", begins, Asked, Dral, Close, Pipe},
    {"SM_CANCELJOB. Dral HPIPE = ", begins, Asked, Dral, Cancel, Pipe},
    {"SM_OPENJOB. Dral HWND = ", begins, Asked, Dral, Open, Window},
    {"SM_CLOSEJOB. Dral HWND = ", begins, Asked, Dral, Close, Window},
    {"SM_CANCELJOB. Dral HWND = ", begins, Asked, Dral, Cancel, Window},
    {"SM_OPENJOB. Nemb HPIPE = ", begins, Asked, Nemb, Open, Pipe},
    {"SM_CLOSEJOB. Nemb HPIPE = ", begins, Asked, Nemb, Close, Pipe},
    {"SM_CANCELJOB. Nemb HPIPE = ", begins, Asked, Nemb, Cancel, Pipe},
    {"SM_OPENJOB. Nemb HWND = ", begins, Asked, Nemb, Open, Window},
    {"SM_CLOSEJOB. Nemb HWND = ", begins, Asked, Nemb, Close, Window},
    {"SM_CANCELJOB. Nemb HWND = ", begins, Asked, Nemb, Cancel, Window},
    {"SM_STARTPAGE/ENDPAGE. Nemb HPIPE = ", begins, AskedAfter, Nemb, Page, Pipe},
    {"SM_STARTPAGE/ENDPAGE. Nemb HWND = ", begins, AskedAfter, Nemb, Page, Window},
    {"SM_STARTPAGE/ENDPAGE default. SendMessage rc = ", begins, Reply, Nemb, Page, nine},
    {"SM_OPENJOB", whole, Asked, either, Open, nine},
    {"SM_STARTPAGE", whole, Asked, Dral, Page, nine},
    {"SM_CLOSEJOB", whole, Asked, either, Close, nine},
    {"SM_CANCELJOB", whole, Asked, either, Cancel, nine},
    {"OPENJOB SendMessage rc = ", begins, Reply, either, Open},
    {"CLOSEJOB SendMessage rc = ", begins, Reply, either, Close},
    {"CANCELJOB SendMessage rc = ", begins, Reply, either, Cancel},
    {"STARTPAGE SendMessage rc = ", begins, Reply, Dral, Page},
    {"STARTPAGE/ENDPAGE SendMessage rc = ", begins, Reply, Nemb, Page, Window},
    {"OPENJOB WriteDralPipe. rc = ", begins, Reply, Dral, Open, Pipe},
    {"STARTPAGE WriteDralPipe. rc = ", begins, Reply, Dral, Page, Pipe},
    {"CLOSEJOB WriteDralPipe rc = ", begins, Reply, Dral, Close, Pipe},
    {"CANCELJOB WriteDralPipe. rc = ", begins, Reply, Dral, Cancel, Pipe},
    {"OPENJOB WriteNembPipe rc = ", begins, Reply, Nemb, Open, Pipe},
    {"STARTPAGE/ENDPAGE WriteNembPipe rc = ", begins, Reply, Nemb, Page, Pipe},
    {"CLOSEJOB WriteNembPipe rc = ", begins, Reply, Nemb, Close, Pipe},
    {"CANCELJOB WriteNembPipe rc = ", begins, Reply, Nemb, Cancel, Pipe},
    {"Inside CLOSE JOB loop", whole, Loop, Dral, Close, nine},
    {"Inside CANCEL JOB loop", whole, Loop, Dral, Cancel, nine},
    {"CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, Dral, Close, nine},
    {"CANCELJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, Dral, Cancel, nine},
    {"Null Window Handle in SendDralMsgXP", whole, NoHandle, Dral, anyEvent, Window},
    {"Null Window Handle in SendNembMsg", whole, NoHandle, Nemb, anyEvent, Window},
    {"Waiting for Dral to finish initialization. Sleeping", whole, StartupWait, Dral},
    {"Waiting for nemb to finish initialization (sleeping 1 minute)", whole, StartupWait, Nemb},
    {"Wait timed out while waiting for Dral initialization to complete", whole, StartupTimeout,
     Dral},
    {"Wait failed while waiting for Dral initialization to complete", whole, StartupWaitFailed,
     Dral},
    {"Finished waiting. Attempting FindWindow again...", whole, StartupWaitEnd, Dral},
    {"Finished waiting. Attempting FindWindow again", whole, StartupWaitEnd, Nemb},
    {"Null Dral Handle, No Messages can be send", whole, NoWindow, Dral},
    {"Null Nemb Window Handle", whole, NoWindow, Nemb},
    {"Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen, Dral, Open,
     nine},
    {"OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT", whole, NotOpen, Dral, Close,
     Pipe},
    {"OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen},
    {"OPENJOB flag was NOT set in epDoc", whole, NotOpen, Nemb, Close, Pipe},
    {"ConnectNamedPipe failed! GetLastError = ", begins, NotConnected},
    {"Invalid VokData or Pipe Handle ", whole, NoRecord, Dral, anyEvent, Pipe},
    {"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT", whole, NoRecord, Nemb, anyEvent, Pipe},
    {"VokData is Null. rc = YESPRINT", whole, NoRecord, either, anyEvent, nine},
    {"Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB", whole, Trail, Dral, Close},
    {"Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB", whole, Trail, Dral, Cancel},
    {"We did not get WAITPRINT in CLOSEJOB...Close PIPE", whole, Trail, Dral, Close},
    {"We did not get WAITPRINT in CANCELJOB...Close PIPE", whole, Trail, Dral, Cancel},
    {"Sleep 1000", whole, Pause, Dral},
    {"Close PIPENon Root Session - EndJobTime=", begins, JobEndTime, Nemb, Close, Pipe},
    {"Close PIPE. rc = TRUE", whole, Trail, Nemb, Cancel, Pipe},
    {"Close PIPE. rc = YESPRINT", whole, Trail, Nemb, Close, Pipe},
    {"The Message Id = ", begins, UnknownEvent, Dral},
    {"Default. WARNING! We should not be here. rc = YESPRINT", whole, Trail, Dral},
    {"Default. WARNING! We Should not be here. rc = YESPRINT", whole, Trail, Dral},
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
