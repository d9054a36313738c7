#include <algorithm>
#include <cstring>
#include <span>
#include <string>

#include "call.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

bool isSystemModule(HMODULE module) {
    return isSimulated(module) && kindOf(module) == Kind::module &&
           numberOf(module) >= firstSystemModule;
}

DWORD WINAPI getConfigData(DWORD first, DWORD item, DWORD third, char* buffer, DWORD* size) {
    Call call("GetConfigData", first, item, third, Out{buffer}, *size);
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    const ConfigLibrary config = call.system().modules.config;
    if (config.whenAsked) {
        call.unlocked(config.whenAsked);
    }
    const auto needed = static_cast<DWORD>(config.item.size() + 1);
    if (!buffer) {
        *size = config.reportedSize.value_or(needed);
        return call.done(config.sizingResult, describe(*size));
    }
    if (*size < needed) {
        call.complain("the buffer is smaller than what was reported");
    }
    call.system().fillGreedily(buffer, *size);
    const DWORD copied = std::min(needed, *size);
    std::memcpy(buffer, config.item.c_str(), copied);
    return call.done(DWORD{0}, describe(config.item.c_str()));
}

HMODULE WINAPI loadLibraryA(LPCSTR path) {
    Call call("LoadLibraryA", path);
    if (call.fails()) {
        return call.failed<HMODULE>();
    }
    const HMODULE module = call.system().modules.load(call.system(), path);
    return module ? call.done(module) : call.done(module, DWORD{ERROR_MOD_NOT_FOUND});
}

BOOL WINAPI freeLibrary(HMODULE module) {
    if (module && !isSimulated(module)) {
        return real.freeLibrary(module);
    }
    Call call("FreeLibrary", module);
    auto* loaded = call.system().modules.at(module);
    if (loaded && --loaded->count == 0) {
        call.system().handles.close(module);
    }
    if (call.fails()) {
        return call.failed<BOOL>();
    }
    if (!loaded && !isSystemModule(module)) {
        call.complain("not a loaded library: " + handleName(module));
        return call.done(FALSE, DWORD{ERROR_INVALID_HANDLE});
    }
    return call.done(TRUE);
}

// Only "kernel32" by that name and the host program are simulated; the runtime asks for others.
HMODULE WINAPI getModuleHandleA(LPCSTR name) {
    if (name && !sameText(name, "kernel32")) {
        return real.getModuleHandleA(name);
    }
    Call call("GetModuleHandleA", name);
    if (call.fails()) {
        return call.failed<HMODULE>();
    }
    if (!name && !call.system().modules.hasHostModule) {
        return call.done(HMODULE{nullptr}, DWORD{ERROR_MOD_NOT_FOUND});
    }
    return call.done(systemModule(name ? "kernel32" : "host"));
}

// Where the system's entry points are: of the looked-up ones, each in its own library.
bool hasEntryPoint(const std::string& module, const std::string& name) {
    if (name == "WTSQueryUserToken") {
        return module == "wtsapi32";
    }
    const bool isEnvironment = name.find("EnvironmentBlock") != std::string::npos;
    return module == (isEnvironment ? "userenv" : "kernel32");
}

void* functionOf(System& system, HMODULE module, const std::string& name) {
    if (!system.modules.hasFunction(name)) {
        return nullptr;
    }
    if (system.modules.at(module)) {
        const bool isExported = name == "GetConfigData" && system.modules.config.hasExport;
        return isExported ? reinterpret_cast<void*>(getConfigData) : nullptr;
    }
    return hasEntryPoint(handleName(module), name) ? lookedUpFunction(name) : nullptr;
}

// Names that are not simulated are the runtime's: the system's own answer, unrecorded.
FARPROC WINAPI getProcAddress(HMODULE module, LPCSTR name) {
    if (module && !isSimulated(module)) {
        return real.getProcAddress(module, name);
    }
    if (module == systemModule("kernel32") && !lookedUpFunction(name)) {
        return real.getProcAddress(real.getModuleHandleA("kernel32.dll"), name);
    }
    Call call("GetProcAddress", module, name);
    if (call.fails()) {
        return call.failed<FARPROC>();
    }
    if (!isSystemModule(module) && !call.system().modules.at(module)) {
        call.complain("not a loaded library: " + handleName(module));
    }
    void* function = functionOf(call.system(), module, name);
    call.done(0, std::string(function ? "found" : "none"));
    if (!function) {
        call.setError(ERROR_PROC_NOT_FOUND);
    }
    return reinterpret_cast<FARPROC>(function);
}

// Copies a path as the system does; `tooSmall` is what it returns for a buffer that is too small.
UINT givePath(Call& call, const std::string& path, char* buffer, DWORD size, UINT tooSmall) {
    if (size == 0) {
        return call.done(tooSmall);
    }
    const bool fits = path.size() < size;
    call.system().fillGreedily(buffer, size);
    if (!fits && tooSmall != size) {
        return call.done(tooSmall);
    }
    const size_t copied = std::min<size_t>(path.size(), size - 1);
    std::memcpy(buffer, path.data(), copied);
    buffer[copied] = '\0';
    if (!fits) {
        return call.done(tooSmall, DWORD{ERROR_INSUFFICIENT_BUFFER});
    }
    return call.done(static_cast<UINT>(path.size()), describe(path.c_str()));
}

DWORD WINAPI getModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size) {
    const bool isHost = !module || module == systemModule("host");
    Call call("GetModuleFileNameA", std::string(isHost ? "host" : "library"), Out{buffer}, size);
    if (call.fails()) {
        return call.failed<DWORD>();
    }
    const Modules& modules = call.system().modules;
    if (!isHost && modules.libraryModule && module != modules.libraryModule) {
        call.complain("not the library's own module");
    }
    const std::string& path = isHost ? modules.hostPath : modules.libraryPath;
    if (modules.cutPathsHaveNoEnd && path.size() >= size) {
        std::memcpy(buffer, path.data(), size);
        return call.done(size);
    }
    return givePath(call, path, buffer, size, size);
}

UINT WINAPI getSystemDirectoryA(LPSTR buffer, UINT size) {
    Call call("GetSystemDirectoryA", Out{buffer}, size);
    if (call.fails()) {
        return call.failed<UINT>();
    }
    const std::string& path = call.system().modules.systemDirectory;
    return givePath(call, path, buffer, size, static_cast<UINT>(path.size() + 1));
}

UINT WINAPI getWindowsDirectoryA(LPSTR buffer, UINT size) {
    Call call("GetWindowsDirectoryA", Out{buffer}, size);
    if (call.fails()) {
        return call.failed<UINT>();
    }
    const std::string& path = call.system().modules.windowsDirectory;
    return givePath(call, path, buffer, size, static_cast<UINT>(path.size() + 1));
}

}  // namespace

std::span<const Substitute> moduleSubstitutes() {
    static const Substitute all[] = {
        substitute("LoadLibraryA", loadLibraryA),
        substitute("FreeLibrary", freeLibrary),
        substitute("GetModuleHandleA", getModuleHandleA),
        substitute("GetProcAddress", getProcAddress),
        substitute("GetModuleFileNameA", getModuleFileNameA),
        substitute("GetSystemDirectoryA", getSystemDirectoryA),
        substitute("GetWindowsDirectoryA", getWindowsDirectoryA),
    };
    return all;
}

}  // namespace vok::test
