#include "image.h"

#include <string>
#include <vector>

namespace vok::test {

const IMAGE_NT_HEADERS64& imageHeaders(HMODULE module) {
    const auto* dos = imageAt<const IMAGE_DOS_HEADER>(module, 0);
    return *imageAt<const IMAGE_NT_HEADERS64>(module, static_cast<ULONGLONG>(dos->e_lfanew));
}

std::vector<std::string> exportNames(HMODULE module) {
    const IMAGE_DATA_DIRECTORY& directory =
        imageHeaders(module).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (directory.Size == 0) {
        return {};
    }
    const auto& table = *imageAt<const IMAGE_EXPORT_DIRECTORY>(module, directory.VirtualAddress);
    const auto* names = imageAt<const DWORD>(module, table.AddressOfNames);
    std::vector<std::string> result;
    for (DWORD i = 0; i < table.NumberOfNames; ++i) {
        result.emplace_back(imageAt<const char>(module, names[i]));
    }
    for (DWORD i = table.NumberOfNames; i < table.NumberOfFunctions; ++i) {
        result.push_back("#" + std::to_string(table.Base + i));
    }
    return result;
}

}  // namespace vok::test
