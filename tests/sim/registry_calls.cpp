#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "call.h"
#include "substitutes.h"
#include "system.h"

namespace vok::test {
namespace {

constexpr REGSAM readOnlyAccess = KEY_READ;

OpenedKey* openKeyAt(System& system, HKEY handle) {
    auto* key = system.handles.get<OpenedKey>(handle, Kind::key);
    return key ? key : system.handles.get<OpenedKey>(handle, Kind::options);
}

// The path that a root and a path below it name; none for a root that is not open.
std::optional<std::string> fullPath(System& system, HKEY root, const char* path) {
    const std::string below = path ? path : "";
    if (root == HKEY_LOCAL_MACHINE) {
        return below;
    }
    const auto* key = openKeyAt(system, root);
    if (!key) {
        return std::nullopt;
    }
    return below.empty() ? key->data->path : key->data->path + "\\" + below;
}

void giveKey(System& system, std::shared_ptr<RegistryKeyData> data, REGSAM access, bool created,
             HKEY* result) {
    system.registry.openings.push_back({data->path, access, created});
    auto opened = std::make_shared<OpenedKey>(OpenedKey{std::move(data), access});
    const Kind kind = (access & KEY_SET_VALUE) != 0 ? Kind::options : Kind::key;
    *result = static_cast<HKEY>(system.handles.open(kind, std::move(opened)));
}

LONG openKey(Call& call, HKEY root, const char* path, REGSAM access, HKEY* result) {
    if (call.fails()) {
        return call.failed<LONG>();
    }
    System& system = call.system();
    const auto full = fullPath(system, root, path);
    if (!full) {
        call.complain("root key is not open");
        return call.done(LONG{ERROR_INVALID_HANDLE});
    }
    if (const LONG refusal = system.registry.refusal(*full)) {
        return call.done(refusal);
    }
    auto key = system.registry.find(*full);
    if (!key) {
        return call.done(LONG{ERROR_FILE_NOT_FOUND});
    }
    giveKey(system, std::move(key), access, false, result);
    return call.done(LONG{ERROR_SUCCESS}, describe(*result));
}

LONG WINAPI regOpenKeyExA(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY result) {
    Call call("RegOpenKeyExA", root, path, options, hex(access), Out{result});
    return openKey(call, root, path, access, result);
}

LONG WINAPI regOpenKeyA(HKEY root, LPCSTR path, PHKEY result) {
    Call call("RegOpenKeyA", root, path, Out{result});
    return openKey(call, root, path, MAXIMUM_ALLOWED, result);
}

LONG WINAPI regCreateKeyExA(HKEY root, LPCSTR path, DWORD reserved, LPSTR className, DWORD options,
                            REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result,
                            LPDWORD disposition) {
    Call call("RegCreateKeyExA", root, path, reserved, static_cast<const char*>(className), options,
              hex(access), static_cast<const SECURITY_ATTRIBUTES*>(security), Out{result},
              Out{disposition});
    if (call.fails()) {
        return call.failed<LONG>();
    }
    System& system = call.system();
    const auto full = fullPath(system, root, path);
    if (!full) {
        call.complain("root key is not open");
        return call.done(LONG{ERROR_INVALID_HANDLE});
    }
    if (const LONG refusal = system.registry.refusal(*full)) {
        return call.done(refusal);
    }
    const bool isNew = !system.registry.hasKey(*full);
    auto key = system.registry.create(*full);
    if (isNew) {
        key->security = describe(static_cast<const SECURITY_ATTRIBUTES*>(security));
    }
    giveKey(system, std::move(key), access, isNew, result);
    if (disposition) {
        *disposition = isNew ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    }
    return call.done(LONG{ERROR_SUCCESS}, describe(*result));
}

// Copies a value out, as the system does: size and type are reported even when it does not fit.
LONG copyValue(System& system, const RegistryValue& value, DWORD* type, BYTE* data, DWORD* size) {
    const DWORD room = size ? *size : 0;
    const auto needed = static_cast<DWORD>(value.data.size());
    if (type) {
        *type = value.type;
    }
    if (size) {
        *size = needed;
    }
    if (data && room < needed) {
        return ERROR_MORE_DATA;
    }
    if (data) {
        system.fillGreedily(data, room);
        std::memcpy(data, value.data.data(), needed);
    }
    return ERROR_SUCCESS;
}

std::string shownValue(const RegistryValue& value) {
    if (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data.data(), sizeof(number));
        return describe(number);
    }
    return value.type == REG_SZ ? describe(value.data.c_str()) : "type " + describe(value.type);
}

LONG WINAPI regQueryValueExA(HKEY handle, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                             LPDWORD size) {
    Call call("RegQueryValueExA", handle, name, Out{reserved}, Out{type}, Out{data},
              size ? describe(*size) : "null");
    if (call.fails()) {
        return call.failed<LONG>();
    }
    System& system = call.system();
    const auto* key = openKeyAt(system, handle);
    if (!key) {
        call.complain("key is not open");
        return call.done(LONG{ERROR_INVALID_HANDLE});
    }
    const auto it = key->data->values.find(name ? name : "");
    if (it == key->data->values.end()) {
        return call.done(LONG{ERROR_FILE_NOT_FOUND});
    }
    const LONG result = copyValue(system, it->second, type, data, size);
    return call.done(result, result == ERROR_SUCCESS ? shownValue(it->second) : "");
}

LONG WINAPI regSetValueExA(HKEY handle, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                           DWORD size) {
    RegistryValue value{type, std::string(reinterpret_cast<const char*>(data), size)};
    Call call("RegSetValueExA", handle, name, reserved, type, shownValue(value), size);
    if (call.fails()) {
        return call.failed<LONG>();
    }
    const auto* key = openKeyAt(call.system(), handle);
    if (!key) {
        call.complain("key is not open");
        return call.done(LONG{ERROR_INVALID_HANDLE});
    }
    if ((key->access & KEY_ALL_ACCESS) == readOnlyAccess) {
        return call.done(LONG{ERROR_ACCESS_DENIED});
    }
    call.system().registry.store(*key->data, name ? name : "", std::move(value));
    return call.done(LONG{ERROR_SUCCESS});
}

LONG WINAPI regCloseKey(HKEY handle) {
    Call call("RegCloseKey", handle);
    if (call.fails()) {
        call.system().handles.close(handle);
        return call.failed<LONG>();
    }
    const Kind kind =
        isSimulated(handle) && kindOf(handle) == Kind::options ? Kind::options : Kind::key;
    return call.done(call.system().closeHandle(call, handle, kind) ? LONG{ERROR_SUCCESS}
                                                                   : LONG{ERROR_INVALID_HANDLE});
}

}  // namespace

std::span<const Substitute> registrySubstitutes() {
    static const Substitute all[] = {
        substitute("RegOpenKeyA", regOpenKeyA),
        substitute("RegOpenKeyExA", regOpenKeyExA),
        substitute("RegCreateKeyExA", regCreateKeyExA),
        substitute("RegQueryValueExA", regQueryValueExA),
        substitute("RegSetValueExA", regSetValueExA),
        substitute("RegCloseKey", regCloseKey),
    };
    return all;
}

}  // namespace vok::test
