#include "messages.h"

#include <algorithm>
#include <array>
#include <cstddef>
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
constexpr std::array texts = {
    KnownText{"FriendlyName = ", begins, LaunchBegin},
    KnownText{"rc = TRUE from VOKLaunchXFiles StartJobTime=", begins, LaunchTrue},
    KnownText{"rc = FALSE from VOKLaunchXFiles", whole, LaunchFalse},
    KnownText{"The module name = ", begins, LaunchDetail},
    KnownText{"Got The File Name! File Name = ", begins, LaunchDetail},
    KnownText{"Did NOT get File Name", whole, NoModuleName},
    KnownText{"Using Pipes in StartDral", whole, RouteChosen, dral, anyEvent, pipe},
    KnownText{"Using Pipes in StartNembXP", whole, RouteChosen, nemb, anyEvent, pipe},
    KnownText{"Using Messages in StartDRALXP", whole, RouteChosen, dral, anyEvent, window},
    KnownText{"Using Messages in StartNembXP", whole, RouteChosen, nemb, anyEvent, window},
    KnownText{"Could not open the Printer. Exiting now...", whole, PrinterNotOpened},
    KnownText{"Did not find matching printer in Registry ", whole, NoPrefixData, nemb},
    KnownText{"dral title - ", begins, LaunchDetail, dral},
    KnownText{"nemb title - ", begins, LaunchDetail, nemb},
    KnownText{"The DRAL is already running", whole, Running, dral},
    KnownText{"Nemb is already running! Create Pipe regardless", whole, Running, nemb},
    KnownText{"Nemb is already running", whole, LaunchDetail, nemb},
    KnownText{"Trying to open mutex :", begins, LaunchDetail, nemb},
    KnownText{"Error Openining Mutex rc=", begins, LaunchDetail, nemb},
    KnownText{"dral path - ", begins, Path, dral},
    KnownText{"dral PATH - ", begins, Path, dral},
    KnownText{"nemb path - ", begins, Path, nemb},
    KnownText{"P2P Port. Launching App in the user context. Port = ", begins, LaunchDetail, dral},
    KnownText{"Failed to launch Dral", whole, StartFailed, dral},
    KnownText{"Launching Dlar, Path = ", begins, Launching, dral},
    KnownText{"Launching Nmeb, Path = ", begins, Launching, nemb},
    KnownText{"Dral Launched in User context. Dral HWND = ", begins, WindowAfterStart, dral},
    KnownText{"WinExec rc = 0. Dral HWND = ", begins, WindowAfterStart, dral},
    KnownText{"WinExec rc = 0. Nemb HWND = ", begins, WindowAfterStart, nemb},
    KnownText{"Return from StartDRALXP Pipes. Dral HPIPE = ", begins, PipeReady, dral},
    KnownText{"Return from StartNEMBXP Pipes. Nemb HPIPE = ", begins, PipeReady, nemb},
    KnownText{"Nemb HPIPE from CreateNamedPipe = ", begins, LaunchDetail, nemb},
    KnownText{"Searching Dral Title = ", begins, RouteChosen, dral, anyEvent, nine},
    KnownText{"hDRAL = ", begins, Window9xFound, dral, anyEvent, nine},
    KnownText{"hNEMB =  ", begins, Window9xFound, nemb, anyEvent, nine},
    KnownText{"FindXWindow className = ", begins, LaunchDetail},
    KnownText{"FindXWindow = ", begins, Window9xSearched},
    KnownText{"The App Name = ", begins, CreateProcess},
    KnownText{"CreateProcess Failed! The error = ", begins, CreateProcessFailed},
    KnownText{"The command line is ", begins, CommandLine},
    KnownText{"WTSQueryUserToken rc=", begins, UserToken},
    KnownText{"Launching via WinExec", whole, StartByWinExec},
    KnownText{"Calling CPAU", whole, StartAsUser},
    KnownText{"CPAU Failed lasterror=", begins, AsUserFailed},
    KnownText{"VokData->hDRALProc = ", begins, ProcessHandle, dral},
    KnownText{"VokData->hNEMBProc = ", begins, ProcessHandle, nemb},
    KnownText{"VokData->hDRALThread  = ", begins, LaunchDetail, dral},
    KnownText{"VokData->hNEMBThread  = ", begins, LaunchDetail, nemb},

    KnownText{"SM_OPENJOB. Dral HPIPE = ", begins, Asked, dral, open, pipe},
    KnownText{"SM_STARTPAGE. Dral HPIPE = ", begins, Asked, dral, page, pipe},
    KnownText{"SM_CLOSEJOB. Dral HPIPE = ", begins, Asked, dral, close, pipe},
    KnownText{"SM_CANCELJOB. Dral HPIPE = ", begins, Asked, dral, cancel, pipe},
    KnownText{"SM_OPENJOB. Dral HWND = ", begins, Asked, dral, open, window},
    KnownText{"SM_CLOSEJOB. Dral HWND = ", begins, Asked, dral, close, window},
    KnownText{"SM_CANCELJOB. Dral HWND = ", begins, Asked, dral, cancel, window},
    KnownText{"SM_OPENJOB. Nemb HPIPE = ", begins, Asked, nemb, open, pipe},
    KnownText{"SM_CLOSEJOB. Nemb HPIPE = ", begins, Asked, nemb, close, pipe},
    KnownText{"SM_CANCELJOB. Nemb HPIPE = ", begins, Asked, nemb, cancel, pipe},
    KnownText{"SM_OPENJOB. Nemb HWND = ", begins, Asked, nemb, open, window},
    KnownText{"SM_CLOSEJOB. Nemb HWND = ", begins, Asked, nemb, close, window},
    KnownText{"SM_CANCELJOB. Nemb HWND = ", begins, Asked, nemb, cancel, window},
    KnownText{"SM_STARTPAGE/ENDPAGE. Nemb HPIPE = ", begins, AskedAfter, nemb, page, pipe},
    KnownText{"SM_STARTPAGE/ENDPAGE. Nemb HWND = ", begins, AskedAfter, nemb, page, window},
    KnownText{"SM_STARTPAGE/ENDPAGE default. SendMessage rc = ", begins, Reply, nemb, page, nine},
    KnownText{"SM_OPENJOB", whole, Asked, either, open, nine},
    KnownText{"SM_STARTPAGE", whole, Asked, dral, page, nine},
    KnownText{"SM_CLOSEJOB", whole, Asked, either, close, nine},
    KnownText{"SM_CANCELJOB", whole, Asked, either, cancel, nine},
    KnownText{"OPENJOB SendMessage rc = ", begins, Reply, either, open},
    KnownText{"CLOSEJOB SendMessage rc = ", begins, Reply, either, close},
    KnownText{"CANCELJOB SendMessage rc = ", begins, Reply, either, cancel},
    KnownText{"STARTPAGE SendMessage rc = ", begins, Reply, dral, page},
    KnownText{"STARTPAGE/ENDPAGE SendMessage rc = ", begins, Reply, nemb, page, window},
    KnownText{"OPENJOB WriteDralPipe. rc = ", begins, Reply, dral, open, pipe},
    KnownText{"STARTPAGE WriteDralPipe. rc = ", begins, Reply, dral, page, pipe},
    KnownText{"CLOSEJOB WriteDralPipe rc = ", begins, Reply, dral, close, pipe},
    KnownText{"CANCELJOB WriteDralPipe. rc = ", begins, Reply, dral, cancel, pipe},
    KnownText{"OPENJOB WriteNembPipe rc = ", begins, Reply, nemb, open, pipe},
    KnownText{"STARTPAGE/ENDPAGE WriteNembPipe rc = ", begins, Reply, nemb, page, pipe},
    KnownText{"CLOSEJOB WriteNembPipe rc = ", begins, Reply, nemb, close, pipe},
    KnownText{"CANCELJOB WriteNembPipe rc = ", begins, Reply, nemb, cancel, pipe},
    KnownText{"Inside CLOSE JOB loop", whole, Loop, dral, close, nine},
    KnownText{"Inside CANCEL JOB loop", whole, Loop, dral, cancel, nine},
    KnownText{"CLOSEJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, dral, close, nine},
    KnownText{"CANCELJOB SendMessage equals WAITPRINT. Sleep 1000", whole, Pause, dral, cancel,
              nine},
    KnownText{"Null Window Handle in SendDralMsgXP", whole, NoHandle, dral, anyEvent, window},
    KnownText{"Null Window Handle in SendNembMsg", whole, NoHandle, nemb, anyEvent, window},
    KnownText{"Waiting for Dral to finish initialization. Sleeping", whole, StartupWait, dral},
    KnownText{"Waiting for nemb to finish initialization (sleeping 1 minute)", whole, StartupWait,
              nemb},
    KnownText{"Wait timed out while waiting for Dral initialization to complete", whole,
              StartupTimeout, dral},
    KnownText{"Wait failed while waiting for Dral initialization to complete", whole,
              StartupWaitFailed, dral},
    KnownText{"Finished waiting. Attempting FindWindow again...", whole, StartupWaitEnd, dral},
    KnownText{"Finished waiting. Attempting FindWindow again", whole, StartupWaitEnd, nemb},
    KnownText{"Null Dral Handle, No Messages can be send", whole, NoWindow, dral},
    KnownText{"Null Nemb Window Handle", whole, NoWindow, nemb},
    KnownText{"Inside OPENJOB, OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen,
              dral, open, nine},
    KnownText{"OPENJOB flag was NOT set in epDoc. Close PIPE. rc = YESPRINT", whole, NotOpen, dral,
              close, pipe},
    KnownText{"OPENJOB flag was NOT set in epDoc. rc = YESPRINT", whole, NotOpen},
    KnownText{"OPENJOB flag was NOT set in epDoc", whole, NotOpen, nemb, close, pipe},
    KnownText{"ConnectNamedPipe failed! GetLastError = ", begins, NotConnected},
    KnownText{"Invalid VokData or Pipe Handle ", whole, NoRecord, dral, anyEvent, pipe},
    KnownText{"Invalid VokData or Nemb Pipe Handle. rc = YESPRINT", whole, NoRecord, nemb, anyEvent,
              pipe},
    KnownText{"VokData is Null. rc = YESPRINT", whole, NoRecord, either, anyEvent, nine},
    KnownText{"Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB", whole, Trail, dral,
              close},
    KnownText{"Reset DRAL handle, since we did not get WAITPRINT in CANCELJOB", whole, Trail, dral,
              cancel},
    KnownText{"We did not get WAITPRINT in CLOSEJOB...Close PIPE", whole, Trail, dral, close},
    KnownText{"We did not get WAITPRINT in CANCELJOB...Close PIPE", whole, Trail, dral, cancel},
    KnownText{"Sleep 1000", whole, Pause, dral},
    KnownText{"Close PIPENon Root Session - EndJobTime=", begins, JobEndTime, nemb, close, pipe},
    KnownText{"Close PIPE. rc = TRUE", whole, Trail, nemb, cancel, pipe},
    KnownText{"Close PIPE. rc = YESPRINT", whole, Trail, nemb, close, pipe},
    KnownText{"The Message Id = ", begins, UnknownEvent, dral},
    KnownText{"Default. WARNING! We should not be here. rc = YESPRINT", whole, Trail, dral},
    KnownText{"Default. WARNING! We Should not be here. rc = YESPRINT", whole, Trail, dral},
    KnownText{"FN=", begins, AnyMessage},
    KnownText{"Invalid input", whole, AnyMessageInvalid},

    KnownText{"Failed to Loadlibrary, path= ", begins, LibraryNotLoaded},
    KnownText{"Module::UnLoad() | Failed to Unloadlibrary, path = ", begins, LibraryNotUnloaded},
    KnownText{"Module::GetPrinterDriverDirectory() fails, ret = ", begins, NoDriverDirectory},
    KnownText{"Module::GetPrinterPath(), ", begins, LibraryDetail},
    KnownText{"RegistryKey64() exception error=", begins, RegistryFailed},
    KnownText{"Win32(", begins, LibraryException},
};

constexpr std::string_view withoutBlanks(std::string_view text) {
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    return text;
}

// Names of functions alone: the library traces nothing else.
bool isTraceName(std::string_view name) {
    return !name.empty() && name.find(' ') == std::string_view::npos;
}

}  // namespace

std::span<const KnownText> knownTexts() {
    return texts;
}

Message recognise(std::string_view message) {
    if (message.size() > 1 && (message[0] == '+' || message[0] == '-')) {
        const std::string_view name = message.substr(1, message.find(' ') - 1);
        if (isTraceName(name)) {
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

const char* toText(Side side) {
    constexpr const char* names[] = {"?", "DRAL", "NEMB"};
    return names[static_cast<std::size_t>(side)];
}

const char* toText(Event event) {
    constexpr const char* names[] = {"other", "OPENJOB", "PAGE", "CLOSEJOB", "CANCELJOB"};
    return names[static_cast<std::size_t>(event)];
}

const char* toText(Route route) {
    constexpr const char* names[] = {"?", "pipe", "message", "9x"};
    return names[static_cast<std::size_t>(route)];
}

}  // namespace vok::log
