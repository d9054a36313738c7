#include "registry.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vok::test {
namespace {

int lower(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}

}  // namespace

bool IgnoringCase::operator()(std::string_view left, std::string_view right) const {
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char a, char b) { return lower(a) < lower(b); });
}

bool sameText(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

RegistryKeyData& Registry::addKey(const std::string& path) {
    return *create(path);
}

void Registry::removeKey(const std::string& path) {
    const std::string below = path + "\\";
    std::erase_if(keys_, [&](const auto& entry) {
        return sameText(entry.first, path) ||
               sameText(std::string_view(entry.first).substr(0, below.size()), below);
    });
    order_.erase(path);
}

const RegistryKeyData* Registry::key(std::string_view path) const {
    return find(path).get();
}

void Registry::setNumber(const std::string& path, const std::string& name, DWORD value) {
    std::string data(sizeof(value), '\0');
    std::memcpy(data.data(), &value, sizeof(value));
    setValue(path, name, {REG_DWORD, data});
}

void Registry::setText(const std::string& path, const std::string& name, const std::string& value) {
    setValue(path, name, {REG_SZ, value + '\0'});
}

void Registry::setValue(const std::string& path, const std::string& name, RegistryValue value) {
    store(*create(path), name, std::move(value));
}

void Registry::removeValue(const std::string& path, const std::string& name) {
    if (const auto key = find(path)) {
        key->values.erase(name);
        std::erase_if(order_[path], [&](const auto& one) { return sameText(one, name); });
    }
}

std::optional<DWORD> Registry::number(std::string_view path, std::string_view name) const {
    const auto key = find(path);
    if (!key) {
        return std::nullopt;
    }
    const auto it = key->values.find(name);
    if (it == key->values.end() || it->second.type != REG_DWORD ||
        it->second.data.size() != sizeof(DWORD)) {
        return std::nullopt;
    }
    DWORD value = 0;
    std::memcpy(&value, it->second.data.data(), sizeof(value));
    return value;
}

std::vector<std::string> Registry::valueNames(std::string_view path) const {
    const auto it = order_.find(path);
    return it == order_.end() ? std::vector<std::string>() : it->second;
}

std::shared_ptr<RegistryKeyData> Registry::find(std::string_view path) const {
    const auto it = keys_.find(path);
    return it == keys_.end() ? nullptr : it->second;
}

std::shared_ptr<RegistryKeyData> Registry::create(const std::string& path) {
    for (size_t end = path.find('\\');; end = path.find('\\', end + 1)) {
        const std::string level = path.substr(0, end);
        auto& key = keys_[level];
        if (!key) {
            key = std::make_shared<RegistryKeyData>();
            key->path = level;
        }
        if (end == std::string::npos) {
            return key;
        }
    }
}

LONG Registry::refusal(std::string_view path) const {
    const auto it = denied_.find(path);
    return it == denied_.end() ? ERROR_SUCCESS : it->second;
}

void Registry::store(RegistryKeyData& key, const std::string& name, RegistryValue value) {
    if (!key.values.contains(name)) {
        order_[key.path].push_back(name);
    }
    key.values[name] = std::move(value);
}

}  // namespace vok::test
