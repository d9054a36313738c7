#include "live_job.h"

#include <vok/config_library.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/agreement.h"
#include "common/settings.h"

namespace vok::bench {
namespace {

void WINAPI noPause(DWORD) {}

BOOL WINAPI sessionZero(DWORD, DWORD* session) {
    *session = 0;
    return TRUE;
}

FARPROC WINAPI lookUpApart(HMODULE module, LPCSTR name) {
    if (std::strcmp(name, "ProcessIdToSessionId") == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(sessionZero));
    }
    return GetProcAddress(module, name);
}

HMODULE load(const std::string& fileName) {
    const HMODULE module = LoadLibraryA(ownFile(fileName).c_str());
    if (module == nullptr) {
        throw std::runtime_error("can't load " + fileName);
    }
    return module;
}

HWND findTitle(const std::string& title) {
    constexpr int tries = 500;
    for (int i = 0; i < tries; ++i) {
        if (const HWND window = FindWindowA(nullptr, title.c_str())) {
            return window;
        }
        Sleep(20);
    }
    throw std::runtime_error("no window '" + title + "'");
}

void closePipe(HANDLE& pipe) {
    if (pipe != nullptr) {
        DisconnectNamedPipe(pipe);
        CloseHandle(pipe);
        pipe = nullptr;
    }
}

}  // namespace

std::string ownFile(const std::string& name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string own = path;
    return own.substr(0, own.rfind('\\') + 1) + name;
}

LiveModule::LiveModule(const std::string& fileName, bool apart)
    : module_(load(fileName)), imports_(module_), exports_(exportsOf(module_)) {
    imports_.replace("Sleep", reinterpret_cast<void*>(noPause));
    if (apart) {
        imports_.replace("GetProcAddress", reinterpret_cast<void*>(lookUpApart));
    }
}

HWND Companions::start(const std::string& name, const std::string& printer) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    std::string line = ownFile(VOK_MODEL_PREFIX + name + ".EXE") + VOK_ARG_PRINTER + printer;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &process) == 0) {
        throw std::runtime_error("can't start " + name);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return findTitle(VOK_MODEL_PREFIX + name + " - " + printer);
}

Companions::Companions(std::string printer)
    : printer_(std::move(printer)),
      dral_(start("DRAL", printer_)),
      nemb_(start("NEMB", printer_)) {}

Companions::~Companions() {
    PostMessageA(dral_, WM_CLOSE, 0, 0);
    PostMessageA(nemb_, WM_CLOSE, 0, 0);
}

void setLiveLogging(Logging logging) {
    const std::string path = sample::baseKey() + "\\XFiles\\Logger";
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                        KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &key, nullptr) != 0) {
        throw std::runtime_error("can't open the logger's key");
    }
    for (const OptionValue& option : optionsFor(logging)) {
        RegSetValueExA(key, option.name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&option.value),
                       sizeof option.value);
    }
    RegCloseKey(key);
    DeleteFileA("C:\\" VOK_MODEL_PREFIX "Vok.log");
}

LiveJob::LiveJob(const Case& one, const Companions& companions) : one_(one) {
    job_.printer = companions.printer();
    job_.dralSuffix = sample::titleSuffix(job_.printer);
    if (one.route != Route::pipe) {
        job_.dral = companions.dral();
        job_.nemb = companions.nemb();
    }
}

LiveJob::~LiveJob() {
    takeOverPipes();
    if (one_.route == Route::pipe) {
        closePipe(job_.dral);
        closePipe(job_.nemb);
    }
}

HANDLE LiveJob::connectedPipe(const std::string& name) {
    const HANDLE pipe = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, 0, VOK_PIPE_INSTANCES,
                                         VOK_PIPE_BUFFER_SIZE, VOK_PIPE_BUFFER_SIZE, 1000, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("can't make " + name);
    }
    ConnectNamedPipe(pipe, nullptr);
    return pipe;
}

// The pipes are the record's after a call: it may have closed or made them.
void LiveJob::takeOverPipes() {
    if (one_.route == Route::pipe && !one_.isGetter()) {
        job_.dral = record_.hDRAL;
        job_.nemb = record_.hNEMB;
    }
}

void LiveJob::preparePipes() {
    takeOverPipes();
    if (one_.kind == Case::Kind::launch) {
        closePipe(job_.dral);
        closePipe(job_.nemb);
        return;
    }
    const bool isNembs = one_.kind == Case::Kind::nemb;
    HANDLE& pipe = isNembs ? job_.nemb : job_.dral;
    if (pipe == nullptr) {
        pipe = connectedPipe((isNembs ? VOK_NEMB_PIPE : VOK_DRAL_PIPE) + job_.printer);
    }
    if (answerIsDue_) {
        LONG answer = 0;
        DWORD moved = 0;
        ReadFile(pipe, &answer, sizeof answer, &moved, nullptr);
    }
    answerIsDue_ = one_.kind == Case::Kind::generic;
}

void LiveJob::prepare() {
    if (one_.route == Route::pipe) {
        preparePipes();
    }
    record_ = recordFor(one_, job_);
}

void LiveJob::perform(const Exports& exports) {
    bench::perform(one_, exports, job_, record_);
}

}  // namespace vok::bench
