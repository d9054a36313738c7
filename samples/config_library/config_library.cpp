/**
 * @file config_library.cpp
 * The configuration library: tells where in the registry the demo software keeps its settings. It
 * serves the model whose prefix begins its own file name.
 *
 * The library loads it for a moment in every call, so it takes nothing that it does not give back
 * when it goes. That rules out the C++ runtime, which keeps a store of memory for exceptions.
 */
#include <vok/companion.h>
#include <vok/config_library.h>

#include <cstring>

#include "common/settings.h"

namespace {

using vok::sample::base_key_head;
using vok::sample::base_key_tail;

constexpr DWORD head_length = sizeof base_key_head - 1;
constexpr DWORD path_size = head_length + VOK_MODEL_PREFIX_LENGTH + sizeof base_key_tail;

/// The base key's path. The model's place is filled in when the library is loaded.
char path[path_size];

}  // namespace

extern "C" __declspec(dllexport) DWORD __cdecl GetConfigData(DWORD first, DWORD item, DWORD third,
                                                             char* buffer, DWORD* size) {
    if (first != 0 || item != VOK_CONFIG_REGISTRY_BASE || third != 0 || size == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (buffer == nullptr) {
        *size = path_size;
        return VOK_CONFIG_SIZE_REPORTED;
    }
    if (*size < path_size)
        return ERROR_INSUFFICIENT_BUFFER;
    std::memcpy(buffer, path, path_size);
    *size = path_size;
    return ERROR_SUCCESS;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    char file[MAX_PATH] = "";
    const DWORD length = GetModuleFileNameA(module, file, sizeof file - 1);
    const char* slash = std::strrchr(file, '\\');
    if (length == 0 || slash == nullptr || std::strlen(slash + 1) < VOK_MODEL_PREFIX_LENGTH)
        return FALSE;
    std::memcpy(path, base_key_head, head_length);
    std::memcpy(path + head_length, slash + 1, VOK_MODEL_PREFIX_LENGTH);
    std::memcpy(path + head_length + VOK_MODEL_PREFIX_LENGTH, base_key_tail, sizeof base_key_tail);
    return TRUE;
}
