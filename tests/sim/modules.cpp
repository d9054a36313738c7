#include "modules.h"

#include "system.h"

namespace vok::test {
namespace {

std::string fileOf(const std::string& path) {
    return path.substr(path.find_last_of('\\') + 1);
}

bool isSystemLibrary(std::string_view file) {
    return sameText(file, "kernel32.dll") || sameText(file, "userenv.dll") ||
           sameText(file, "wtsapi32.dll");
}

}  // namespace

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
    return isSystemLibrary(file) && (bare || sameText(path, systemDirectory + "\\" + file));
}

Modules::Loaded* Modules::load(System& system, const std::string& path) {
    if (!exists(system, path)) {
        return nullptr;
    }
    Loaded& loaded = loaded_[path];
    if (loaded.count++ == 0) {
        loaded.path = path;
        loaded.handle = static_cast<HMODULE>(system.handles.open(Kind::module));
    }
    return &loaded;
}

Modules::Loaded* Modules::at(HMODULE handle) {
    for (auto& [path, loaded] : loaded_) {
        if (loaded.handle == handle && loaded.count > 0) {
            return &loaded;
        }
    }
    return nullptr;
}

bool Modules::isConfig(const Loaded& loaded) const {
    return sameText(fileOf(loaded.path), config.fileName);
}

}  // namespace vok::test
