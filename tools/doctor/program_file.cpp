#include "program_file.h"

#include <fmt/format.h>
#include <windows.h>

#include <winver.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>
#include <iterator>
#include <string>
#include <vector>

namespace vok::doctor {

namespace {

std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The structure at that place of the file; all zero, and the needed size raised, when the file ends
// before.
template <typename Part>
Part partAt(const std::string& bytes, std::uint64_t offset, std::uint64_t& needed) {
    Part part = {};
    needed = std::max(needed, offset + sizeof part);
    if (offset + sizeof part <= bytes.size()) {
        std::memcpy(&part, bytes.data() + offset, sizeof part);
    }
    return part;
}

// How many bytes the headers promise: sections, and the signature behind them. 0 for no program.
std::uint64_t promisedSize(const std::string& bytes) {
    std::uint64_t needed = 0;
    const auto dos = partAt<IMAGE_DOS_HEADER>(bytes, 0, needed);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE) {
        return 0;
    }
    const auto start = static_cast<std::uint32_t>(dos.e_lfanew);
    // Header and size of both kinds are in the same places, the directories are not.
    const auto header = partAt<IMAGE_NT_HEADERS64>(bytes, start, needed);
    std::uint64_t at = start + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) +
                       header.FileHeader.SizeOfOptionalHeader;
    for (int count = 0; count < header.FileHeader.NumberOfSections; ++count) {
        const auto section = partAt<IMAGE_SECTION_HEADER>(bytes, at, needed);
        at += sizeof section;
        if (section.PointerToRawData != 0) {
            needed = std::max<std::uint64_t>(
                needed, std::uint64_t{section.PointerToRawData} + section.SizeOfRawData);
        }
    }
    if (header.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC &&
        header.OptionalHeader.NumberOfRvaAndSizes > IMAGE_DIRECTORY_ENTRY_SECURITY) {
        const auto& signature = header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY];
        needed = std::max<std::uint64_t>(needed,
                                         std::uint64_t{signature.VirtualAddress} + signature.Size);
    }
    return needed;
}

// A value of the version resource; null when there is none.
void* versionValue(const std::string& path, const char* name, std::vector<char>& block) {
    DWORD ignored = 0;
    UINT length = 0;
    void* value = nullptr;
    block.resize(GetFileVersionInfoSizeA(path.c_str(), &ignored));
    if (block.empty() ||
        GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) == 0 ||
        VerQueryValueA(block.data(), name, &value, &length) == 0) {
        return nullptr;
    }
    return value;
}

}  // namespace

std::string whatIsCut(const std::string& path) {
    const std::string bytes = readAll(path);
    const std::uint64_t promised = promisedSize(bytes);
    return bytes.size() >= promised ? std::string()
                                    : fmt::format("has {} of its {} bytes", bytes.size(), promised);
}

bool holdsText(const std::string& path, const std::string& text) {
    return readAll(path).find(text) != std::string::npos;
}

std::string versionOf(const std::string& path) {
    std::vector<char> block;
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(versionValue(path, "\\", block));
    if (info == nullptr) {
        return {};
    }
    return fmt::format("{}.{}.{}.{}", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                       HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
}

std::string nameOfTheBuild(const std::string& path) {
    std::vector<char> block;
    const void* text = versionValue(path, "\\StringFileInfo\\040904E4\\OriginalFilename", block);
    return text == nullptr ? std::string() : static_cast<const char*>(text);
}

}  // namespace vok::doctor
