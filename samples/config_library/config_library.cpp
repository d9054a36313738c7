/**
 * @file config_library.cpp
 * The configuration library: tells where in the registry the demo software keeps its settings.
 */
#include <vok/config_library.h>

#include <cstring>

#include "common/settings.h"

extern "C" __declspec(dllexport) DWORD
    GetConfigData(DWORD first, DWORD item, DWORD third, char* buffer, DWORD* size) {
    constexpr DWORD path_size = sizeof vok::sample::base_key;
    if (first != 0 || item != VOK_CONFIG_REGISTRY_BASE || third != 0 || size == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (buffer == nullptr) {
        *size = path_size;
        return VOK_CONFIG_SIZE_REPORTED;
    }
    if (*size < path_size)
        return ERROR_INSUFFICIENT_BUFFER;
    std::memcpy(buffer, vok::sample::base_key, path_size);
    *size = path_size;
    return ERROR_SUCCESS;
}
