#include "import_table.h"

#include <bit>
#include <cstring>

namespace vok::sample {
namespace {

template <typename T>
T* at(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(module) + offset);
}

/// The slot in which a library keeps the address of one of its imports; null if it has none.
ULONG_PTR* findImport(HMODULE library, const char* name) {
    const auto* dos = at<IMAGE_DOS_HEADER>(library, 0);
    const auto* headers = at<IMAGE_NT_HEADERS>(library, static_cast<DWORD>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.VirtualAddress == 0)
        return nullptr;
    const auto* entry = at<IMAGE_IMPORT_DESCRIPTOR>(library, imports.VirtualAddress);
    for (; entry->Name != 0; ++entry) {
        const auto* names = at<IMAGE_THUNK_DATA>(library, entry->OriginalFirstThunk);
        auto* slots = at<IMAGE_THUNK_DATA>(library, entry->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
                continue;
            const auto offset = static_cast<DWORD>(names->u1.AddressOfData);
            if (std::strcmp(at<IMAGE_IMPORT_BY_NAME>(library, offset)->Name, name) == 0)
                return &slots->u1.Function;
        }
    }
    return nullptr;
}

}  // namespace

bool replaceImport(HMODULE library, const char* name, FARPROC substitute) {
    ULONG_PTR* slot = findImport(library, name);
    DWORD protection = 0;
    if (slot == nullptr || VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection) == 0)
        return false;
    *slot = std::bit_cast<ULONG_PTR>(substitute);
    VirtualProtect(slot, sizeof *slot, protection, &protection);
    return true;
}

}  // namespace vok::sample
