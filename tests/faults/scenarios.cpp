// The situations themselves.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "faults/scenario.h"

namespace vok::test {
namespace {

constexpr const char* hiddenWindow = "DRAL Hidden Window-Suffix";
constexpr const char* dralTitle = "DEMODRAL - Office";
constexpr const char* dralTitle9x = "DRAL - Office";
constexpr const char* nembClass = "DEMONEMB - ";
constexpr const char* nembTitle = "DEMONEMB - Office";
constexpr const char* dralPipe = R"(\\.\pipe\DRALOffice)";
constexpr const char* nembPipe = R"(\\.\pipe\NEMBOffice)";
constexpr const char* networkPort = R"(\\HOST\\server\queue)";
constexpr DWORD endPage = 1136;

void addDral(System& system) {
    system.desktop.add(hiddenWindow, hiddenWindow);
}

void addNemb(System& system) {
    system.desktop.add(nembClass, nembTitle);
}

// Each start makes the companion's window appear.
void cold(System& system, VKDATA&) {
    system.processes.onStart = [&system](const Start& start) {
        if (start.mentions("/J=1")) {
            addNemb(system);
        } else {
            addDral(system);
        }
    };
}

void warm(System& system, VKDATA&) {
    system.desktop.add("any", system.os.is9x() ? dralTitle9x : dralTitle);
    addDral(system);
    addNemb(system);
}

void warm9x(System& system, VKDATA&) {
    system.desktop.add(hiddenWindow, dralTitle9x);
    addNemb(system);
}

void apart(System& system, VKDATA&) {
    system.separateSessions();
}

void apartWithoutUser(System& system, VKDATA&) {
    system.separateSessions().sessions.userTokenError = ERROR_NO_TOKEN;
}

void apartAndForbidden(System& system, VKDATA&) {
    system.separateSessions().sessions.userTokenError = ERROR_PRIVILEGE_NOT_HELD;
}

void apartAndRunning(System& system, VKDATA&) {
    system.separateSessions();
    system.desktop.add("any", dralTitle);
    system.mutexes.add(R"(Global\DEMONEMB - OFFICE)");
}

void forbiddenInOwnSession(System& system, VKDATA& record) {
    cold(system, record);
    system.sessions.userTokenError = ERROR_PRIVILEGE_NOT_HELD;
}

void withoutPrefix(System& system, VKDATA& record) {
    cold(system, record);
    system.registry.removeValue(
        R"(System\CurrentControlSet\control\Print\Printers\Office\PrinterDriverData)",
        "Printer Prefix");
}

// A record as a launch by messages left it; the windows answer as given, the last answer for ever.
auto windows(std::vector<LRESULT> replies, bool opened) {
    return [replies, opened](System& system, VKDATA& record) {
        record.hDRAL = system.desktop.add(hiddenWindow, hiddenWindow, replies).handle;
        record.hNEMB = system.desktop.add(nembClass, nembTitle, replies).handle;
        record.dralMode = VOK_MODE_WINDOW;
        record.nembMode = VOK_MODE_WINDOW;
        record.epDoc = opened ? VOK_EPDOC_OPENJOB : 0;
    };
}

// The same on a 9x system, where the modes are not used.
auto windows9x(std::vector<LRESULT> replies, bool opened) {
    return [replies, opened](System& system, VKDATA& record) {
        windows(replies, opened)(system, record);
        record.dralMode = VOK_MODE_NONE;
        record.nembMode = VOK_MODE_NONE;
    };
}

// Companions that are still starting: no windows, but processes. They come up while waited for.
void starting(System& system, VKDATA& record) {
    record.hDRALProc = system.processes.open();
    record.hNEMBProc = system.processes.open();
    record.dralMode = VOK_MODE_WINDOW;
    record.nembMode = VOK_MODE_WINDOW;
    record.epDoc = VOK_EPDOC_OPENJOB;
    system.processes.whileIdleWait = [&system] {
        addDral(system);
        addNemb(system);
    };
}

auto pipes(LONG reply, bool opened, bool connected) {
    return [=](System& system, VKDATA& record) {
        system.separateSessions();
        const PipeClient client = PipeClient::answering({reply});
        record.hDRAL = system.pipes.open(dralPipe, client, connected);
        record.hNEMB = system.pipes.open(nembPipe, client, connected);
        record.dralMode = VOK_MODE_PIPE;
        record.nembMode = VOK_MODE_PIPE;
        record.epDoc = opened ? VOK_EPDOC_OPENJOB : 0;
    };
}

std::vector<Scenario> launches() {
    const std::vector<Step> launch = {{Export::launch}};
    return {
        {"LaunchWindowCold", os::winXp, Logging::on, "LPT1:", launch, cold},
        {"LaunchWindowColdLoggingOff", os::win2000, Logging::off, "LPT1:", launch, cold},
        {"LaunchWindowColdCritical", os::nt40, Logging::critical, "LPT1:", launch, cold},
        {"LaunchWindowColdNoConfiguration", os::winXp, Logging::none, "LPT1:", launch, cold},
        {"LaunchWindowWarm", os::win2003, Logging::on, "LPT1:", launch, warm},
        {"LaunchWindowNetworkPort", os::winXp, Logging::on, networkPort, launch, cold},
        {"LaunchWindowNetworkPortForbidden", os::winXp, Logging::off, networkPort, launch,
         forbiddenInOwnSession},
        {"LaunchWindowNetworkPortOld", os::win2000, Logging::on, networkPort, launch, cold},
        {"LaunchWindowNoPrefix", os::winXp, Logging::off, "LPT1:", launch, withoutPrefix},
        {"LaunchPipeCold", os::win7, Logging::on, "LPT1:", launch, apart},
        {"LaunchPipeColdLoggingOff", os::win10, Logging::off, "LPT1:", launch, apart},
        {"LaunchPipeColdCritical", os::win7, Logging::critical, "LPT1:", launch, apart},
        {"LaunchPipeColdCommonLog", os::win2003, Logging::common, "LPT1:", launch, apart},
        {"LaunchPipeWarm", os::win7, Logging::on, "LPT1:", launch, apartAndRunning},
        {"LaunchPipeNobodyLoggedOn", os::win7, Logging::on, "LPT1:", launch, apartWithoutUser},
        {"LaunchPipeForbidden", os::winXp, Logging::off, "LPT1:", launch, apartAndForbidden},
        {"Launch9xCold", os::win98, Logging::on, "LPT1:", launch, cold},
        {"Launch9xColdLoggingOff", os::win95, Logging::off, "LPT1:", launch, cold},
        {"Launch9xWarm", os::winMe, Logging::on, "LPT1:", launch, warm9x},
    };
}

Scenario event(const std::string& name, const OsRelease& os, Step step,
               std::function<void(System&, VKDATA&)> prepare, Logging logging = Logging::on) {
    return {name, os, logging, "LPT1:", {step}, std::move(prepare)};
}

std::vector<Scenario> windowEvents() {
    return {
        event("DralWindowOpen", os::winXp, {Export::dral, SM_OPENJOB}, windows({1}, false)),
        event("DralWindowOpenUncached", os::winXp, {Export::dral, SM_OPENJOB}, windows({1}, false),
              Logging::uncached),
        event("DralWindowOpenCritical", os::win7, {Export::dral, SM_OPENJOB}, windows({1}, false),
              Logging::critical),
        event("DralWindowClose", os::win2000, {Export::dral, SM_CLOSEJOB}, windows({0}, true)),
        event("DralWindowCloseWait", os::nt40, {Export::dral, SM_CLOSEJOB}, windows({2}, true)),
        event("DralWindowPage", os::winXp, {Export::dral, SM_STARTPAGE}, windows({7}, true)),
        event("DralWindowCancel", os::winXp, {Export::dral, SM_CANCELJOB}, windows({1}, true)),
        event("DralWindowUnknown", os::winXp, {Export::dral, endPage}, windows({1}, true)),
        event("DralWindowStarting", os::win2003, {Export::dral, SM_STARTPAGE}, starting),
        event("NembWindowOpen", os::winXp, {Export::nemb, SM_OPENJOB}, windows({1}, true)),
        event("NembWindowClose", os::winXp, {Export::nemb, SM_CLOSEJOB}, windows({1}, true)),
        event("NembWindowPage", os::win2000, {Export::nemb, endPage}, windows({0}, true)),
        event("NembWindowCancel", os::nt40, {Export::nemb, SM_CANCELJOB}, windows({2}, false)),
        event("NembWindowStarting", os::winXp, {Export::nemb, SM_CLOSEJOB}, starting),
        event("NembWindowStartingCommonLog", os::winXp, {Export::nemb, SM_STARTPAGE}, starting,
              Logging::common),
    };
}

std::vector<Scenario> pipeEvents() {
    return {
        event("DralPipeOpen", os::win7, {Export::dral, SM_OPENJOB}, pipes(1, false, false)),
        event("DralPipeClose", os::win7, {Export::dral, SM_CLOSEJOB}, pipes(1, true, true)),
        event("DralPipeCloseWait", os::win10, {Export::dral, SM_CLOSEJOB}, pipes(2, true, true)),
        event("DralPipeCloseUnopened", os::winXp, {Export::dral, SM_CLOSEJOB},
              pipes(1, false, true)),
        event("DralPipePage", os::win2003, {Export::dral, SM_STARTPAGE}, pipes(0, true, true)),
        event("DralPipeCancel", os::win7, {Export::dral, SM_CANCELJOB}, pipes(1, true, true)),
        event("NembPipeOpen", os::win7, {Export::nemb, SM_OPENJOB}, pipes(0, true, false)),
        event("NembPipeOpenCritical", os::win7, {Export::nemb, SM_OPENJOB}, pipes(0, true, false),
              Logging::critical),
        event("NembPipeClose", os::winXp, {Export::nemb, SM_CLOSEJOB}, pipes(0, true, true)),
        event("NembPipeCloseUnopened", os::winXp, {Export::nemb, SM_CLOSEJOB},
              pipes(0, false, true)),
        event("NembPipePage", os::win7, {Export::nemb, endPage}, pipes(0, true, true)),
        event("NembPipeCancel", os::win10, {Export::nemb, SM_CANCELJOB}, pipes(2, true, true)),
    };
}

std::vector<Scenario> otherEvents() {
    return {
        event("Dral9xOpen", os::win98, {Export::dral, SM_OPENJOB}, windows9x({1}, false)),
        event("Dral9xClose", os::win95, {Export::dral, SM_CLOSEJOB}, windows9x({2, 2, 1}, true)),
        event("Dral9xCancel", os::winMe, {Export::dral, SM_CANCELJOB}, windows9x({2, 1}, true)),
        event("Nemb9xOpen", os::win98, {Export::nemb, SM_OPENJOB}, windows9x({1}, true)),
        event("Nemb9xPage", os::win98, {Export::nemb, endPage}, windows9x({1}, true),
              Logging::critical),
        event("MessageToWindow", os::winXp, {Export::messageToWindow, 1200}, windows({1}, true)),
        event("MessageToPipe", os::win7, {Export::messageToPipe, 1200}, pipes(1, true, true)),
        event("MessageToUnconnectedPipe", os::win7, {Export::messageToPipe, 1200},
              pipes(1, true, false)),
        {"JobByPipes",
         os::win7,
         Logging::off,
         "LPT1:",
         {{Export::launch},
          {Export::dral, SM_OPENJOB},
          {Export::nemb, SM_OPENJOB},
          {Export::dral, SM_STARTPAGE},
          {Export::nemb, SM_CLOSEJOB},
          {Export::dral, SM_CLOSEJOB}},
         apart},
        {"JobByWindows",
         os::winXp,
         Logging::off,
         "LPT1:",
         {{Export::launch},
          {Export::dral, SM_OPENJOB},
          {Export::nemb, SM_OPENJOB},
          {Export::nemb, SM_CANCELJOB},
          {Export::dral, SM_CANCELJOB}},
         cold},
    };
}

}  // namespace

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = [] {
        std::vector<Scenario> made = launches();
        for (const auto& more : {windowEvents(), pipeEvents(), otherEvents()}) {
            made.insert(made.end(), more.begin(), more.end());
        }
        return made;
    }();
    return all;
}

}  // namespace vok::test
