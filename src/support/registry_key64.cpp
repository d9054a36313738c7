#include "support/registry_key64.h"

#include <cstdint>
#include <string>

#include "support/exception.h"
#include "support/os_version.h"

namespace vok {

namespace {

[[noreturn]] void fail(const std::string& what, LONG result, std::uint32_t line) {
    throw Win32Exception(what, static_cast<std::uint32_t>(result), "RegistryKey64", line);
}

}  // namespace

RegistryKey64::RegistryKey64(const char* path, bool create, HKEY root) : security_(true) {
    RegistryKey64::initAccess();
    RegistryKey64::openOrCreate(path, create, root);
}

RegistryKey64::~RegistryKey64() {
    RegCloseKey(key_);
}

void RegistryKey64::initAccess() {
    access_ = KEY_ALL_ACCESS;
    if (OsVersion::getInstance().isWow64()) {
        access_ |= KEY_WOW64_64KEY;
    }
}

void RegistryKey64::openOrCreate(const char* path, bool create, HKEY root) {
    try {
        regOpenKeyEx(root, path, 0, access_, &key_);
    } catch (const Win32Exception&) {
        if (!create) {
            throw;
        }
        createKey(path, root);
    }
}

void RegistryKey64::createKey(const char* path, HKEY root) {
    if (OsVersion::getInstance().isNT()) {
        createKeyXP(path, root);
    } else {
        createKey9X(path, root);
    }
}

void RegistryKey64::createKeyXP(const char* path, HKEY root) {
    DWORD disposition = 0;
    regCreateKeyEx(root, path, 0, "", REG_OPTION_NON_VOLATILE, access_, security_.getAttributes(),
                   &key_, &disposition);
}

// The 9x family creates one level at a time.
void RegistryKey64::createKey9X(const char* path, HKEY root) {
    std::string rest = path;
    std::string built;
    do {
        if (!built.empty() && rest.size() >= 2 && rest.front() == '\\') {
            rest.erase(0, 1);
            built += '\\';
        }
        const std::size_t end = rest.find('\\');
        if (end != std::string::npos && end != 0) {
            built.append(rest, 0, end);
            rest.erase(0, end);
        } else {
            built += rest;
            rest.clear();
        }
        HKEY level = nullptr;
        DWORD disposition = 0;
        regCreateKeyEx(root, built.c_str(), 0, "", REG_OPTION_NON_VOLATILE, access_,
                       security_.getAttributes(), &level, &disposition);
        RegCloseKey(level);
    } while (built != path);
    regOpenKeyEx(root, path, 0, access_, &key_);
}

bool RegistryKey64::getValue(const char* name, std::uint32_t* out) const {
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    const LONG result =
        RegQueryValueExA(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (result == ERROR_FILE_NOT_FOUND) {
        return false;
    }
    if (result != ERROR_SUCCESS || type != REG_DWORD) {
        std::string what = std::string("RegistryKey64::getValue(ulong)") + name;
        if (type != REG_DWORD) {
            what += " : incorrect value type";
        }
        fail(what, result, 195);
    }
    *out = value;
    return true;
}

void RegistryKey64::setValue(const std::string& name, std::uint32_t value) const {
    const DWORD number = value;
    const LONG result = RegSetValueExA(key_, name.c_str(), 0, REG_DWORD,
                                       reinterpret_cast<const BYTE*>(&number), sizeof number);
    if (result != ERROR_SUCCESS) {
        fail("RegistryKey64::setValue(ulong): Unable to set " + name, result, 271);
    }
}

void RegistryKey64::regOpenKeyEx(HKEY root, const char* path, DWORD options, REGSAM access,
                                 HKEY* key) {
    const LONG result = RegOpenKeyExA(root, path, options, access, key);
    if (result != ERROR_SUCCESS) {
        fail("RegistryKey64::regOpenKeyEx()", result, 561);
    }
}

void RegistryKey64::regCreateKeyEx(HKEY root, const char* path, DWORD reserved,
                                   const char* className, DWORD options, REGSAM access,
                                   SECURITY_ATTRIBUTES* attributes, HKEY* key, DWORD* disposition) {
    std::string classText = className;
    const LONG result = RegCreateKeyExA(root, path, reserved, classText.data(), options, access,
                                        attributes, key, disposition);
    if (result != ERROR_SUCCESS) {
        fail("RegistryKey64::regCreateKeyEx()", result, 586);
    }
}

}  // namespace vok
