#include "dll/launch_lines.h"

#include <string>

namespace vok::test {

Lines launchBegins(const std::string& portName) {
    return traceOf("VOKLaunchXFiles") + Lines{"FriendlyName = Office, PortName = " + portName};
}

Lines prefixLookup() {
    return {R"(The module name = C:\WINDOWS\system32\spool\prtprocs\x64\DEMOvok.dll)",
            R"(Got The File Name! File Name = \DEMOvok.dll)"};
}

Lines startBegins(const System& system, const std::string& function) {
    const Lines sessions = system.os.isNtFrom(5, 1) ? traceOf("FindOutSessionInfo") : Lines();
    return traceOf(function) + prefixLookup() + sessions;
}

std::string dralCommand(const System& system) {
    return system.driverPath() + "DEMODRAL.EXE SPLPP /F=Office";
}

std::string nembPipeCommand(const System& system) {
    return system.driverPath() + "DEMONEMB.EXE SPLPP /F=Office /J=1";
}

std::string nembMessageCommand(const System& system) {
    return system.driverPath() + "DEMOnemb.exe SPLPP /F=Office /J=1";
}

std::string lineOf(const std::string& text, const void* handle) {
    return text + logText(handle);
}

}  // namespace vok::test
