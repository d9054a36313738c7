/**
 * @file config_library.cpp
 * The configuration library: tells where in the registry the demo software keeps its settings. It
 * serves the model whose prefix begins its own file name.
 */
#include <vok/companion.h>
#include <vok/config_library.h>

#include <array>
#include <cstring>

#include "common/settings.h"

extern "C" __declspec(dllexport) DWORD
    GetConfigData(DWORD first, DWORD item, DWORD third, char* buffer, DWORD* size) {
    if (first != 0 || item != VOK_CONFIG_REGISTRY_BASE || third != 0 || size == nullptr)
        return ERROR_INVALID_PARAMETER;
    const std::string path = vok::sample::baseKey();
    const auto path_size = static_cast<DWORD>(path.size() + 1);
    if (buffer == nullptr) {
        *size = path_size;
        return VOK_CONFIG_SIZE_REPORTED;
    }
    if (*size < path_size)
        return ERROR_INSUFFICIENT_BUFFER;
    std::memcpy(buffer, path.c_str(), path_size);
    *size = path_size;
    return ERROR_SUCCESS;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size() - 1));
    const char* slash = std::strrchr(path.data(), '\\');
    const std::string name = slash == nullptr ? path.data() : slash + 1;
    vok::sample::serveModel(name.substr(0, VOK_MODEL_PREFIX_LENGTH));
    return TRUE;
}
