#include "log_writer.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace vok::test {

namespace {

constexpr const char* directory = "C:\\windows\\system32\\spool\\drivers\\x64\\3\\";

bool isDral(const std::string& side) {
    return side == "Dral";
}

// "SM_STARTPAGE" for DRAL, "SM_STARTPAGE/ENDPAGE" for NEMB.
std::string nameFor(const std::string& side, const std::string& event) {
    return event == "STARTPAGE" && !isDral(side) ? "STARTPAGE/ENDPAGE" : event;
}

}  // namespace

std::string handleText(unsigned handle) {
    return handle == 0 ? "" : fmt::format("0x{:016X}", handle);
}

LogWriter::LogWriter(Out out, LogOptions options) : out_(std::move(out)), options_(options) {}

void LogWriter::record(std::string_view category, std::string_view text) {
    std::string line;
    if (options_.clock) {
        const std::int64_t seconds = time_ / 1000;
        line += fmt::format("2024/03/{:02}-{:02}:{:02}:{:02}.{:03} ", 7 + seconds / 86400,
                            seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, time_ % 1000);
    }
    if (options_.processId) {
        line += fmt::format("pid={:04x} ", *options_.processId);
    }
    if (options_.threadId) {
        line += fmt::format("tid={:04x} ", *options_.threadId);
    }
    line += fmt::format("{:<10} {}\r\n", category, text);
    ++time_;
    out_(line);
}

void LogWriter::detail(std::string_view text) {
    if (options_.details) {
        record("VOK", text);
    }
}

void LogWriter::trace(std::string_view name) {
    if (options_.traces) {
        record("VOK", fmt::format("+{}", name));
        record("VOK", fmt::format("-{}", name));
    }
}

void LogWriter::moduleName() {
    detail(fmt::format("The module name = {}DEMOvok.dll", directory));
    detail("Got The File Name! File Name = \\DEMOvok.dll");
}

void LogWriter::sessions() {
    moduleName();
    trace("FindOutSessionInfo");
}

std::uint32_t LogWriter::tick() const {
    constexpr std::uint32_t first = 4294967290;
    return first + static_cast<std::uint32_t>(time_ - clockSetBy_);
}

void LogWriter::beginLaunch(const std::string& printer) {
    launchTick_ = tick();
    trace("VOKLaunchXFiles");
    detail(fmt::format("FriendlyName = {}, PortName = LPT1:", printer));
}

void LogWriter::beginDral(const std::string& route) {
    trace("StartDRALXP");
    sessions();
    detail(route == "Pipes" ? "Using Pipes in StartDral" : "Using Messages in StartDRALXP");
}

void LogWriter::beginNemb(const std::string& route) {
    trace("StartNEMBXP");
    sessions();
    detail(fmt::format("Using {} in StartNembXP", route));
}

void LogWriter::startAsUser(const std::string& side, bool token) {
    trace("LaunchProgram");
    detail(fmt::format("The command line is {}DEMO{}.EXE SPLPP /F=P", directory, side));
    detail(token ? "WTSQueryUserToken rc=1 lastError=0 token handle=98"
                 : "WTSQueryUserToken rc=0 lastError=1008 token handle=0");
}

void LogWriter::launchByPipe(const std::string& printer, unsigned dral, unsigned nemb) {
    beginLaunch(printer);
    beginDral("Pipes");
    detail("dral title - DEMODRAL - " + printer);
    detail("The DRAL is already running");
    detail("Return from StartDRALXP Pipes. Dral HPIPE = " + handleText(dral));
    beginNemb("Pipes");
    detail("nemb title - DEMONEMB - " + printer);
    detail("Nemb is already running! Create Pipe regardless");
    detail("Nemb HPIPE from CreateNamedPipe = " + handleText(nemb));
    detail("Return from StartNEMBXP Pipes. Nemb HPIPE = " + handleText(nemb));
    detail(fmt::format("rc = TRUE from VOKLaunchXFiles StartJobTime={}", launchTick_));
}

void LogWriter::launchByWindow(const std::string& printer, unsigned dral, unsigned nemb) {
    beginLaunch(printer);
    beginDral("Messages");
    detail("dral title - DEMODRAL - " + printer);
    detail("dral PATH - DEMODRAL.EXE");
    detail(fmt::format("Launching Dlar, Path = {}DEMODRAL.EXE SPLPP /F={}", directory, printer));
    detail("WinExec rc = 0. Dral HWND = " + handleText(dral));
    beginNemb("Messages");
    detail(
        fmt::format("Launching Nmeb, Path = {}DEMOnemb.exe SPLPP /F={} /J=1", directory, printer));
    detail("WinExec rc = 0. Nemb HWND = " + handleText(nemb));
    detail(dral != 0 && nemb != 0
               ? fmt::format("rc = TRUE from VOKLaunchXFiles StartJobTime={}", launchTick_)
               : "rc = FALSE from VOKLaunchXFiles");
}

void LogWriter::launch9x(const std::string& printer) {
    beginLaunch(printer);
    detail("Searching Dral Title = DRAL - " + printer);
    detail("hDRAL = " + handleText(0x10048));
    trace("StartNEMB9X");
    moduleName();
    detail("hNEMB =  ");
    trace("LaunchXFile");
    detail("The App Name = C:\\windows\\system\\DEMOnemb.exeThe Cmd Line =  SPLPP /F=P /J=1");
    detail("Launching Nmeb, Path =  SPLPP /F=P /J=1");
    detail("FindXWindow className = DEMONEMB - FindXWindow WindowName = DEMONEMB - P");
    detail(fmt::format("FindXWindow = {}FindWindow attempts = 27", handleText(0x10062)));
    detail(fmt::format("rc = TRUE from VOKLaunchXFiles StartJobTime={}", launchTick_));
}

void LogWriter::traceEvent(const std::string& side, const std::string& family) {
    const std::string upper = isDral(side) ? "DRAL" : "NEMB";
    trace("VOKSend" + side + "Msg");
    trace("Send" + upper + "Msg" + family);
}

void LogWriter::pipeEvent(const std::string& side, const std::string& event, unsigned handle,
                          const std::string& reply) {
    traceEvent(side, "XP");
    detail(fmt::format("SM_{}. {} HPIPE = {}", nameFor(side, event), side, handleText(handle)));
    // The dot stands in three of DRAL's lines and in none of NEMB's.
    const char* dot = isDral(side) && event != "CLOSEJOB" ? "." : "";
    detail(fmt::format("{} Write{}Pipe{} rc = {}", nameFor(side, event), side, dot, reply));
    if (isDral(side) && event == "CLOSEJOB") {
        detail("We did not get WAITPRINT in CLOSEJOB...Close PIPE");
        detail("Sleep 1000 ");
    } else if (event == "CLOSEJOB") {
        detail(fmt::format("Close PIPENon Root Session - EndJobTime={}", tick()));
    }
}

void LogWriter::windowEvent(const std::string& side, const std::string& event, unsigned handle,
                            const std::string& reply) {
    traceEvent(side, "XP");
    if (!isDral(side) || event != "STARTPAGE") {
        detail(fmt::format("SM_{}. {} HWND = {}", nameFor(side, event), side, handleText(handle)));
    }
    const bool last = !isDral(side) && event == "CLOSEJOB";
    detail(fmt::format("{} SendMessage rc = {}{}", nameFor(side, event), reply,
                       last ? fmt::format(" - Root Session EndJobTime={}", tick()) : ""));
    if (isDral(side) && event == "CLOSEJOB") {
        detail("Reset DRAL handle, since we did not get WAITPRINT in CLOSEJOB");
        detail("Sleep 1000");
    }
}

void LogWriter::event9x(const std::string& side, const std::string& event,
                        const std::string& reply) {
    traceEvent(side, "9X");
    const bool ends = event == "CLOSEJOB" || event == "CANCELJOB";
    if (!isDral(side) && event == "STARTPAGE") {
        detail("SM_STARTPAGE/ENDPAGE default. SendMessage rc = " + reply);
        return;
    }
    detail("SM_" + event);
    if (isDral(side) && ends) {
        detail(fmt::format("Inside {} JOB loop", event.substr(0, event.size() - 3)));
    }
    detail(event + " SendMessage rc = " + reply);
}

void LogWriter::pipeJob(const std::string& printer, unsigned handles, int pages,
                        const std::string& openReply) {
    launchByPipe(printer, handles, handles + 4);
    pipeEvent("Dral", "OPENJOB", handles, openReply);
    if (openReply != "YESPRINT") {
        pipeEvent("Dral", "CANCELJOB", handles, "YESPRINT");
        pipeEvent("Nemb", "CANCELJOB", handles + 4, "YESPRINT");
        return;
    }
    pipeEvent("Nemb", "OPENJOB", handles + 4, "YESPRINT");
    for (int page = 0; page < pages; ++page) {
        pipeEvent("Dral", "STARTPAGE", handles, "YESPRINT");
        pipeEvent("Nemb", "STARTPAGE", handles + 4, "YESPRINT");
        pipeEvent("Nemb", "STARTPAGE", handles + 4, "YESPRINT");
    }
    pipeEvent("Dral", "CLOSEJOB", handles, "YESPRINT");
    pipeEvent("Nemb", "CLOSEJOB", handles + 4, "YESPRINT");
}

}  // namespace vok::test
