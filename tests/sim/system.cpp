#include "system.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "call.h"
#include "expect.h"
#include "real.h"

namespace vok::test {
namespace {

System* theSystem = nullptr;
const DWORD threadIdSlot = ::TlsAlloc();

[[noreturn]] void fail(const char* why) {
    std::fprintf(stderr, "simulation: %s\n", why);
    std::fflush(stderr);
    std::abort();
}

}  // namespace

System::System(const OsRelease& release) : os(release) {
    if (theSystem) {
        fail("there is a simulated system already");
    }
    real.initializeCriticalSection(&lock_);
    theSystem = this;
    addCommonKeys();
    hideNewerFunctions();
    messages = {{2, "The system cannot find the file specified.\r\n"},
                {5, "Access is denied.\r\n"},
                {6, "The handle is invalid.\r\n"},
                {8, "Not enough memory resources are available to process this command.\r\n"},
                {206, "The filename or extension is too long.\r\n"}};
}

System::~System() {
    theSystem = nullptr;
    real.deleteCriticalSection(&lock_);
}

System& System::current() {
    if (!theSystem) {
        fail("a substitute was called, but there is no simulated system");
    }
    return *theSystem;
}

System* System::find() {
    return theSystem;
}

void System::addCommonKeys() {
    registry.setText(R"(SYSTEM\CurrentControlSet\Control\ComputerName\ActiveComputerName)",
                     "ComputerName", "HOST");
}

void System::hideNewerFunctions() {
    if (!os.isNtFrom(5, 1)) {
        for (const char* name :
             {"WTSGetActiveConsoleSessionId", "WTSQueryUserToken", "IsWow64Process"}) {
            modules.hideFunction(name);
        }
    }
    if (!os.isNtFrom(5, 0)) {
        for (const char* name :
             {"ProcessIdToSessionId", "CreateEnvironmentBlock", "DestroyEnvironmentBlock"}) {
            modules.hideFunction(name);
        }
        modules.hideLibrary("userenv.dll");
        modules.hideLibrary("wtsapi32.dll");
    }
}

System& System::addPrinter(const std::string& name, const std::string& prefix) {
    const RegistryValue value{REG_SZ, prefix + '\0'};
    spooler.setData(name, "Printer Prefix", value);
    registry.setValue(
        R"(System\CurrentControlSet\control\Print\Printers\)" + name + R"(\PrinterDriverData)",
        "Printer Prefix", value);
    return *this;
}

System& System::installConfig() {
    modules.config.inSearchPath = true;
    registry.addKey(modules.config.item);
    return *this;
}

System& System::startLog() {
    installConfig();
    registry.setNumber(loggerKey(), "startLog", 1);
    return *this;
}

System& System::separateSessions() {
    sessions.own = 0;
    sessions.console = 1;
    return *this;
}

std::string System::driverPath() const {
    if (os.is9x()) {
        return spooler.driverDirectory + "\\";
    }
    return spooler.driverDirectory + (os.major < 5 ? R"(\2\)" : R"(\3\)");
}

std::string System::loggerKey() const {
    return modules.config.item + R"(\XFiles\Logger)";
}

std::string System::logPath() const {
    return R"(C:\DEMOVok.log)";
}

std::vector<std::string> System::logLines() const {
    return withoutClock(files.lines(logPath()));
}

void System::setThreadId(DWORD id) {
    real.tlsSetValue(threadIdSlot, reinterpret_cast<void*>(static_cast<ULONG_PTR>(id)));
}

// TlsGetValue clears the last error, which is not ours to clear.
DWORD System::threadId() {
    const DWORD error = real.getLastError();
    const auto id = reinterpret_cast<ULONG_PTR>(real.tlsGetValue(threadIdSlot));
    real.setLastError(error);
    return static_cast<DWORD>(id);
}

bool System::closeHandle(Call& call, const void* handle, Kind kind) {
    if (!isSimulated(handle) || kindOf(handle) != kind) {
        call.complain("closes what is not its own: " + handleName(handle));
        return false;
    }
    if (auto* pipe = handles.get<PipeData>(handle, Kind::pipe)) {
        pipe->closed = true;
    }
    const Closing closing = handles.close(handle);
    if (closing != Closing::closed) {
        call.complain((closing == Closing::closedBefore ? "closed before: " : "never given out: ") +
                      handleName(handle));
    }
    return closing == Closing::closed;
}

void System::fillGreedily(void* buffer, size_t size) const {
    if (greedyBuffers) {
        std::memset(buffer, 'Z', size);
    }
}

void System::slept(DWORD milliseconds) const {
    if (onSleep) {
        onSleep(milliseconds);
    }
}

}  // namespace vok::test
