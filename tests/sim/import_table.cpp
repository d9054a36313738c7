#include "import_table.h"

#include <string>
#include <string_view>
#include <vector>

#include "image.h"
#include "real.h"

namespace vok::test {
namespace {

std::string importName(HMODULE module, const IMAGE_THUNK_DATA64& thunk) {
    if (IMAGE_SNAP_BY_ORDINAL64(thunk.u1.Ordinal)) {
        return "#" + std::to_string(IMAGE_ORDINAL64(thunk.u1.Ordinal));
    }
    const auto* byName = imageAt<IMAGE_IMPORT_BY_NAME>(module, thunk.u1.AddressOfData);
    return reinterpret_cast<const char*>(byName->Name);
}

void readDescriptor(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& from, std::vector<Import>& to) {
    const std::string dll = imageAt<char>(module, from.Name);
    const auto* names = imageAt<IMAGE_THUNK_DATA64>(module, from.OriginalFirstThunk);
    auto** slots = imageAt<void*>(module, from.FirstThunk);
    for (size_t i = 0; names[i].u1.AddressOfData != 0; ++i) {
        to.push_back({dll, importName(module, names[i]), &slots[i]});
    }
}

void write(void** slot, void* value) {
    DWORD before = 0;
    real.virtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before);
    *slot = value;
    real.virtualProtect(slot, sizeof(*slot), before, &before);
}

}  // namespace

ImportTable::ImportTable(HMODULE module) {
    const IMAGE_DATA_DIRECTORY& directory =
        imageHeaders(module).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.Size == 0) {
        return;
    }
    const auto* descriptor = imageAt<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress);
    for (; descriptor->Name != 0; ++descriptor) {
        readDescriptor(module, *descriptor, imports_);
    }
}

ImportTable::~ImportTable() {
    restore();
}

const Import* ImportTable::find(std::string_view name) const {
    for (const Import& import : imports_) {
        if (import.name == name) {
            return &import;
        }
    }
    return nullptr;
}

bool ImportTable::replace(std::string_view name, void* function) {
    const Import* import = find(name);
    if (!import) {
        return false;
    }
    set(*import, function);
    return true;
}

void ImportTable::set(const Import& import, void* function) {
    replaced_.push_back({import.slot, *import.slot});
    write(import.slot, function);
}

void ImportTable::restore() {
    for (auto it = replaced_.rbegin(); it != replaced_.rend(); ++it) {
        write(it->slot, it->before);
    }
    replaced_.clear();
}

}  // namespace vok::test
