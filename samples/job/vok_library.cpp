#include "vok_library.h"

#include <bit>
#include <string>

namespace vok::sample {
namespace {

template <typename Function>
void lookUp(HMODULE module, const char* name, Function& function) {
    function = std::bit_cast<Function>(GetProcAddress(module, name));
}

}  // namespace

VokLibrary::~VokLibrary() {
    unload();
}

void VokLibrary::unload() {
    if (module_ != nullptr)
        FreeLibrary(module_);
    module_ = nullptr;
    calls_ = {};
}

DWORD VokLibrary::load(const std::string& directory, const std::string& prefix) {
    path_ = directory + "\\" + prefix + "vok.dll";
    module_ = LoadLibraryA(path_.c_str());
    if (module_ == nullptr)
        return GetLastError();
    lookUp(module_, VOK_EXPORT_LAUNCH_XFILES, calls_.launch);
    lookUp(module_, VOK_EXPORT_SEND_DRAL_MSG, calls_.sendDral);
    lookUp(module_, VOK_EXPORT_SEND_NEMB_MSG, calls_.sendNemb);
    if (calls_.launch != nullptr && calls_.sendDral != nullptr && calls_.sendNemb != nullptr)
        return ERROR_SUCCESS;
    unload();
    return ERROR_PROC_NOT_FOUND;
}

}  // namespace vok::sample
