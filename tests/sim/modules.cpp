#include "modules.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "system.h"

namespace vok::test {
namespace {

std::string fileOf(const std::string& path) {
    return path.substr(path.find_last_of('\\') + 1);
}

// "kernel32" for "C:\\WINDOWS\\system32\\KERNEL32.DLL".
std::string baseNameOf(const std::string& path) {
    const std::string file = fileOf(path);
    const size_t dot = file.find_last_of('.');
    return dot != std::string::npos && sameText(file.substr(dot), ".dll") ? file.substr(0, dot)
                                                                          : file;
}

}  // namespace

HMODULE systemModule(std::string_view name) {
    for (uint32_t number = firstSystemModule; number < lastSystemModule; ++number) {
        const HANDLE handle = handleOf(Kind::module, number);
        if (sameText(handleName(handle), name)) {
            return static_cast<HMODULE>(handle);
        }
    }
    return nullptr;
}

size_t Modules::countLoaded(const std::string& path) const {
    const auto it = loaded_.find(path);
    return it == loaded_.end() ? 0 : it->second.count;
}

bool Modules::exists(System& system, const std::string& path) const {
    const std::string file = fileOf(path);
    const bool bare = file.size() == path.size();
    if (hiddenLibraries_.contains(file)) {
        return false;
    }
    if (sameText(file, config.fileName)) {
        return (bare && config.inSearchPath) ||
               (config.inDriverDirectory && sameText(path, system.driverPath() + file));
    }
    return systemModule(baseNameOf(file)) &&
           (bare || sameText(path, systemDirectory + "\\" + file));
}

HMODULE Modules::load(System& system, const std::string& path) {
    if (!exists(system, path)) {
        return nullptr;
    }
    if (const HMODULE module = systemModule(baseNameOf(path))) {
        return module;
    }
    Loaded& loaded = loaded_[path];
    if (loaded.count++ == 0) {
        loaded.path = path;
        loaded.handle = static_cast<HMODULE>(system.handles.open(Kind::module));
    }
    return loaded.handle;
}

Modules::Loaded* Modules::at(HMODULE handle) {
    for (auto& [path, loaded] : loaded_) {
        if (loaded.handle == handle && loaded.count > 0) {
            return &loaded;
        }
    }
    return nullptr;
}

}  // namespace vok::test
