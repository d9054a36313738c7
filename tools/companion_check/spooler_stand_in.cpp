#include "spooler_stand_in.h"

#include <vok/companion.h>
#include <vok/config_library.h>
#include <winspool.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "common/import_table.h"
#include "common/system.h"

namespace vok::check {

namespace {

struct State {
    std::string companion;
    std::string prefix;
    std::vector<HANDLE> started;
    Exchange exchange;
};

// The substitutes are called by the library and have nowhere else to look.
State state;

const HANDLE printerHandle = std::bit_cast<HANDLE>(std::uintptr_t{0x7001});
const HKEY printerKey = std::bit_cast<HKEY>(std::uintptr_t{0x7002});

BOOL WINAPI openPrinter(char* /*name*/, HANDLE* printer, PRINTER_DEFAULTSA* /*defaults*/) {
    *printer = printerHandle;
    return TRUE;
}

BOOL WINAPI closePrinter(HANDLE /*printer*/) {
    return TRUE;
}

DWORD givePrefix(BYTE* data, DWORD size) {
    const auto length = static_cast<DWORD>(state.prefix.size() + 1);
    if (size < length) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, state.prefix.c_str(), length);
    return ERROR_SUCCESS;
}

DWORD WINAPI getPrinterData(HANDLE /*printer*/, char* /*value*/, DWORD* /*type*/, BYTE* data,
                            DWORD size, DWORD* needed) {
    *needed = static_cast<DWORD>(state.prefix.size() + 1);
    return givePrefix(data, size);
}

BOOL WINAPI getDriverDirectory(char* /*server*/, char* /*environment*/, DWORD /*level*/,
                               BYTE* directory, DWORD /*size*/, DWORD* needed) {
    static const char name[] = "C:\\drivers";
    std::memcpy(directory, name, sizeof name);
    *needed = sizeof name;
    return TRUE;
}

LSTATUS WINAPI openKey(HKEY /*root*/, const char* /*path*/, HKEY* key) {
    *key = printerKey;
    return ERROR_SUCCESS;
}

LSTATUS WINAPI queryValue(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                          DWORD* size) {
    if (key != printerKey) {
        return RegQueryValueExA(key, name, reserved, type, data, size);
    }
    return static_cast<LSTATUS>(givePrefix(data, *size));
}

LSTATUS WINAPI closeKey(HKEY key) {
    return key == printerKey ? ERROR_SUCCESS : RegCloseKey(key);
}

// Without a configuration library the library neither logs nor touches the registry.
HMODULE WINAPI loadLibrary(const char* name) {
    if (tools::sameName(tools::fileOf(name), state.prefix + VOK_CONFIG_LIBRARY_FILE)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return LoadLibraryA(name);
}

std::string argumentsOf(const std::string& commandLine) {
    const std::size_t start = commandLine.find(VOK_ARG_SPOOLER);
    return start == std::string::npos ? std::string() : commandLine.substr(start);
}

PROCESS_INFORMATION create(const std::string& arguments) {
    std::string line = state.companion + arguments;
    if (state.companion.find(' ') != std::string::npos) {
        line = '"' + state.companion + '"' + arguments;
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessA(state.companion.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &startup, &process) == 0) {
        return {};
    }
    HANDLE own = nullptr;
    DuplicateHandle(GetCurrentProcess(), process.hProcess, GetCurrentProcess(), &own, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    state.started.push_back(own);
    return process;
}

UINT WINAPI winExec(const char* commandLine, UINT /*show*/) {
    constexpr UINT done = 33;
    return startCompanion(argumentsOf(commandLine)) == nullptr ? ERROR_FILE_NOT_FOUND : done;
}

// CreateProcessA, which starts companions on the 9x family, and CreateProcessAsUserA, which is
// given a token before the application's name.
template <typename... Before>
BOOL WINAPI createProcess(Before... /*tokenAndApplication*/, char* commandLine,
                          SECURITY_ATTRIBUTES* /*process*/, SECURITY_ATTRIBUTES* /*thread*/,
                          BOOL /*inherit*/, DWORD /*flags*/, void* /*environment*/,
                          const char* /*directory*/, STARTUPINFOA* /*startup*/,
                          PROCESS_INFORMATION* process) {
    *process = create(argumentsOf(commandLine));
    return process->hProcess != nullptr ? TRUE : FALSE;
}

LRESULT WINAPI sendMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    const LRESULT word = SendMessageA(window, message, first, second);
    state.exchange = {true, word, 0};
    return word;
}

BOOL WINAPI readFile(HANDLE file, void* buffer, DWORD size, DWORD* moved, OVERLAPPED* overlapped) {
    const BOOL done = ReadFile(file, buffer, size, moved, overlapped);
    state.exchange = {true, 0, done != 0 ? *moved : 0};
    return done;
}

// The library's pause after every close is of no use to the companion.
void WINAPI sleepShortly(DWORD milliseconds) {
    constexpr DWORD pause = 1000;
    Sleep(milliseconds == pause ? 1 : milliseconds);
}

}  // namespace

std::string standIn(HMODULE library, const std::string& companion, const std::string& prefix) {
    state.companion = companion;
    state.prefix = prefix;
    const struct {
        const char* name;
        FARPROC substitute;
    } imports[] = {
        {"OpenPrinterA", std::bit_cast<FARPROC>(&openPrinter)},
        {"ClosePrinter", std::bit_cast<FARPROC>(&closePrinter)},
        {"GetPrinterDataA", std::bit_cast<FARPROC>(&getPrinterData)},
        {"GetPrinterDriverDirectoryA", std::bit_cast<FARPROC>(&getDriverDirectory)},
        {"RegOpenKeyA", std::bit_cast<FARPROC>(&openKey)},
        {"RegQueryValueExA", std::bit_cast<FARPROC>(&queryValue)},
        {"RegCloseKey", std::bit_cast<FARPROC>(&closeKey)},
        {"LoadLibraryA", std::bit_cast<FARPROC>(&loadLibrary)},
        {"WinExec", std::bit_cast<FARPROC>(&winExec)},
        {"CreateProcessAsUserA", std::bit_cast<FARPROC>(&createProcess<HANDLE, const char*>)},
        {"CreateProcessA", std::bit_cast<FARPROC>(&createProcess<const char*>)},
        {"SendMessageA", std::bit_cast<FARPROC>(&sendMessage)},
        {"ReadFile", std::bit_cast<FARPROC>(&readFile)},
        {"Sleep", std::bit_cast<FARPROC>(&sleepShortly)},
    };
    for (const auto& import : imports) {
        if (!sample::replaceImport(library, import.name, import.substitute)) {
            return import.name;
        }
    }
    return {};
}

const std::vector<HANDLE>& startedCompanions() {
    return state.started;
}

HANDLE startCompanion(const std::string& arguments) {
    const PROCESS_INFORMATION process = create(arguments);
    if (process.hProcess == nullptr) {
        return nullptr;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return state.started.back();
}

void endCompanions() {
    for (const HANDLE process : state.started) {
        TerminateProcess(process, 0);
        WaitForSingleObject(process, INFINITE);
        CloseHandle(process);
    }
    state.started.clear();
}

Exchange& exchange() {
    return state.exchange;
}

}  // namespace vok::check
