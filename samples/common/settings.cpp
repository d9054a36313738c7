#include "settings.h"

#include <windows.h>

#include <array>
#include <string>

namespace vok::sample {
namespace {

std::string& model() {
    static std::string prefix = VOK_MODEL_PREFIX;
    return prefix;
}

long writeValue(const std::string& below, const char* value, DWORD type, const void* data,
                DWORD size) {
    HKEY key = nullptr;
    const std::string path = baseKey() + below;
    LSTATUS status = RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                                     nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    status = RegSetValueExA(key, value, 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
    return status;
}

}  // namespace

std::string baseKey() {
    return base_key_head + model() + base_key_tail;
}

void serveModel(const std::string& prefix) {
    model() = prefix;
}

std::string readSetting(const std::string& below, const char* value) {
    HKEY key = nullptr;
    const std::string path = baseKey() + below;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return {};
    std::array<char, 1024> text{};
    DWORD size = text.size() - 1;
    DWORD type = REG_NONE;
    const LSTATUS status =
        RegQueryValueExA(key, value, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS && type == REG_SZ ? std::string(text.data()) : std::string();
}

long writeSetting(const std::string& below, const char* value, const std::string& text) {
    return writeValue(below, value, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

long writeSetting(const std::string& below, const char* value, unsigned long number) {
    return writeValue(below, value, REG_DWORD, &number, sizeof(DWORD));
}

}  // namespace vok::sample
