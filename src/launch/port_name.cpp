#include "launch/port_name.h"

#include <mbstring.h>
#include <windows.h>

#include <string>

#include "support/text.h"

namespace vok {

namespace {

constexpr const char* computerNameKey =
    "SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName";
constexpr DWORD computerNameSize = 255;

// Empty when it can't be read.
std::string activeComputerName() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, computerNameKey, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return {};
    }
    char name[computerNameSize + 1] = {};
    DWORD size = computerNameSize;
    const LONG result = RegQueryValueExA(key, "ComputerName", nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(name), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS ? name : std::string();
}

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.c_str());
}

}  // namespace

std::string StripComputerName(const char* source) {
    const std::string text = toString(source);
    const std::string name = activeComputerName();
    const unsigned char* found = _mbsstr(bytes(text), bytes(name));
    if (found == nullptr) {
        return text;
    }
    return text.substr(static_cast<std::size_t>(found - bytes(text)) + name.size());
}

bool IsUncPath(const std::string& text) {
    constexpr std::size_t shortest = 5;
    if (text.size() < shortest || !text.starts_with("\\\\")) {
        return false;
    }
    const std::size_t backslash = text.find('\\', 2);
    return backslash != std::string::npos && backslash + 1 < text.size();
}

}  // namespace vok
