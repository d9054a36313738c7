#include "faults/restarted_library.h"

#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace vok::test {
namespace {

// What the library's runtime takes from the system and keeps until the process ends.
struct RuntimeHoldings {
    std::mutex lock;
    std::vector<DWORD> slots;
    std::vector<HANDLE> semaphores;
};

RuntimeHoldings& holdings() {
    static RuntimeHoldings all;
    return all;
}

DWORD WINAPI allocateSlot() {
    const DWORD slot = ::TlsAlloc();
    const std::lock_guard guard(holdings().lock);
    holdings().slots.push_back(slot);
    return slot;
}

HANDLE WINAPI createSemaphore(LPSECURITY_ATTRIBUTES security, LONG initial, LONG most,
                              LPCWSTR name) {
    const HANDLE semaphore = ::CreateSemaphoreW(security, initial, most, name);
    const std::lock_guard guard(holdings().lock);
    holdings().semaphores.push_back(semaphore);
    return semaphore;
}

std::map<std::string, void*> withHoldings(std::map<std::string, void*> overrides) {
    overrides.emplace("TlsAlloc", reinterpret_cast<void*>(allocateSlot));
    overrides.emplace("CreateSemaphoreW", reinterpret_cast<void*>(createSemaphore));
    return overrides;
}

void giveBack() {
    for (const DWORD slot : holdings().slots) {
        ::TlsFree(slot);
    }
    for (const HANDLE semaphore : holdings().semaphores) {
        real.closeHandle(semaphore);
    }
    holdings().slots.clear();
    holdings().semaphores.clear();
}

}  // namespace

Exports::Exports(const LoadedModule& module)
    : launchXFiles(module.function<VOKLaunchXFilesFn>(VOK_EXPORT_LAUNCH_XFILES)),
      sendDralMsg(module.function<VOKSendMsgFn>(VOK_EXPORT_SEND_DRAL_MSG)),
      sendNembMsg(module.function<VOKSendMsgFn>(VOK_EXPORT_SEND_NEMB_MSG)),
      sendMsgEx(module.function<VOKSendMsgExFn>(VOK_EXPORT_SEND_MSG_EX)),
      getDral(module.function<VOKGetFn>(VOK_EXPORT_GET_DRAL)),
      getNemb(module.function<VOKGetFn>(VOK_EXPORT_GET_NEMB)) {}

RestartedLibrary::RestartedLibrary(const std::map<std::string, void*>& overrides)
    : module_(productDll(), VOK_MODEL_PREFIX "vok.dll", withHoldings(overrides)),
      exports_(module_) {
    rememberData();
}

RestartedLibrary& RestartedLibrary::shared() {
    static RestartedLibrary library;
    return library;
}

void RestartedLibrary::rememberData() {
    auto* base = reinterpret_cast<BYTE*>(module_.module());
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (WORD i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) != 0) {
            BYTE* begin = base + section->VirtualAddress;
            data_.push_back({begin, std::vector<BYTE>(begin, begin + section->Misc.VirtualSize)});
        }
    }
}

void RestartedLibrary::start() {
    for (const Section& section : data_) {
        std::memcpy(section.begin, section.bytes.data(), section.bytes.size());
    }
    if (!module_.attach()) {
        throw std::runtime_error("the library refuses to be loaded");
    }
}

void RestartedLibrary::stop() {
    module_.detach();
    giveBack();
}

}  // namespace vok::test
