#include "loaded_library.h"

#include <atomic>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

#include "image.h"
#include "real.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

using EntryPoint = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

std::string freshFolder() {
    static std::atomic<unsigned> last = 0;
    char temp[MAX_PATH + 1] = "";
    ::GetTempPathA(sizeof(temp), temp);
    std::string folder =
        temp + ("vok-" + std::to_string(real.getCurrentProcessId())) + "-" + std::to_string(++last);
    ::CreateDirectoryA(folder.c_str(), nullptr);
    return folder;
}

std::runtime_error failure(const std::string& what, const std::string& file) {
    return std::runtime_error(what + " " + file + ", error " + std::to_string(real.getLastError()));
}

}  // namespace

LoadedModule::LoadedModule(const std::string& file, const std::string& asFileName,
                           const std::map<std::string, void*>& overrides) {
    load(file, asFileName);
    fillImports(overrides);
}

LoadedModule::~LoadedModule() {
    if (attached_) {
        detach();
    }
    unload();
}

void LoadedModule::load(const std::string& file, const std::string& asFileName) {
    folder_ = freshFolder();
    copy_ = folder_ + "\\" + asFileName;
    if (!::CopyFileA(file.c_str(), copy_.c_str(), FALSE)) {
        const auto error = failure("cannot copy", file);
        unload();
        throw error;
    }
    module_ = real.loadLibraryExA(copy_.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (!module_) {
        const auto error = failure("cannot load", file);
        unload();
        throw error;
    }
}

void LoadedModule::fillImports(const std::map<std::string, void*>& overrides) {
    imports_.emplace(module_);
    for (const Import& import : imports_->imports()) {
        const auto it = overrides.find(import.name);
        void* function = it != overrides.end() ? it->second : substituteFor(import.name);
        if (!function) {
            function = realAddress(import.dll.c_str(), import.name.c_str());
        }
        imports_->set(import, function);
    }
}

void LoadedModule::unload() {
    imports_.reset();
    if (module_) {
        real.freeLibrary(module_);
    }
    real.deleteFileA(copy_.c_str());
    ::RemoveDirectoryA(folder_.c_str());
}

BOOL LoadedModule::callEntryPoint(DWORD reason, HMODULE as) {
    const DWORD offset = imageHeaders(module_).OptionalHeader.AddressOfEntryPoint;
    const auto entry = reinterpret_cast<EntryPoint>(imageAt<void>(module_, offset));
    return entry(as ? as : module_, reason, nullptr);
}

bool LoadedModule::attach() {
    attached_ = callEntryPoint(DLL_PROCESS_ATTACH) != FALSE;
    return attached_;
}

void LoadedModule::detach() {
    attached_ = false;
    callEntryPoint(DLL_PROCESS_DETACH);
}

FARPROC LoadedModule::address(const char* name) const {
    const FARPROC found = real.getProcAddress(module_, name);
    if (!found) {
        throw std::runtime_error(std::string("no export ") + name);
    }
    return found;
}

namespace {

std::string givenDllOr(const char* other) {
    const char* given = std::getenv("VOK_TEST_DLL");
    return given ? given : other;
}

}  // namespace

std::string productDll() {
    return givenDllOr(VOK_PRODUCT_DLL);
}

std::string shippedDll() {
    return givenDllOr(VOK_SHIPPED_DLL);
}

LoadedLibrary::LoadedLibrary(const std::string& asFileName)
    : LoadedModule(productDll(), asFileName),
      launchXFiles(function<VOKLaunchXFilesFn>(VOK_EXPORT_LAUNCH_XFILES)),
      sendDralMsg(function<VOKSendMsgFn>(VOK_EXPORT_SEND_DRAL_MSG)),
      sendNembMsg(function<VOKSendMsgFn>(VOK_EXPORT_SEND_NEMB_MSG)),
      sendMsgEx(function<VOKSendMsgExFn>(VOK_EXPORT_SEND_MSG_EX)),
      getDral(function<VOKGetFn>(VOK_EXPORT_GET_DRAL)),
      getNemb(function<VOKGetFn>(VOK_EXPORT_GET_NEMB)) {
    if (System* system = System::find()) {
        system->modules.libraryModule = module();
    }
    attach();
}

}  // namespace vok::test
