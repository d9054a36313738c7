// The simulated registry, in memory. Paths and names ignore case, as the real one does.
#pragma once
#include <windows.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

struct IgnoringCase {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
};
bool sameText(std::string_view left, std::string_view right);  // ignoring case

struct RegistryValue {
    DWORD type = REG_NONE;
    std::string data;
};

struct RegistryKeyData {
    std::string path;      // below HKEY_LOCAL_MACHINE
    std::string security;  // as records show it, of a key made by RegCreateKeyExA
    std::map<std::string, RegistryValue, IgnoringCase> values;
};

struct OpenedKey {  // a key handle
    std::shared_ptr<RegistryKeyData> data;
    REGSAM access = 0;
};

struct KeyOpening {  // one successful opening or creation
    std::string path;
    REGSAM access = 0;
    bool created = false;
};

// All paths are below HKEY_LOCAL_MACHINE.
class Registry {
  public:
    RegistryKeyData& addKey(const std::string& path);
    void removeKey(const std::string& path);  // with all below it
    bool hasKey(std::string_view path) const { return keys_.contains(path); }
    const RegistryKeyData* key(std::string_view path) const;

    void setNumber(const std::string& path, const std::string& name, DWORD value);
    void setText(const std::string& path, const std::string& name, const std::string& value);
    void setValue(const std::string& path, const std::string& name, RegistryValue value);
    void removeValue(const std::string& path, const std::string& name);
    // The number, or none when there is no such value or it is of another type.
    std::optional<DWORD> number(std::string_view path, std::string_view name) const;
    std::vector<std::string> valueNames(std::string_view path) const;  // in order of creation

    // A key that cannot be opened or made: `error` is the result of every try.
    void deny(const std::string& path, LONG error = ERROR_ACCESS_DENIED) { denied_[path] = error; }
    void allow(const std::string& path) { denied_.erase(path); }

    std::vector<KeyOpening> openings;

    // For the substitutes.
    std::shared_ptr<RegistryKeyData> find(std::string_view path) const;
    std::shared_ptr<RegistryKeyData> create(const std::string& path);
    LONG refusal(std::string_view path) const;
    void store(RegistryKeyData& key, const std::string& name, RegistryValue value);

  private:
    std::map<std::string, std::shared_ptr<RegistryKeyData>, IgnoringCase> keys_;
    std::map<std::string, LONG, IgnoringCase> denied_;
    std::map<std::string, std::vector<std::string>, IgnoringCase> order_;
};

}  // namespace vok::test
