#include "file_identity.h"

#include <cstdint>
#include <optional>
#include <string>

#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <io.h>
#else
#include <sys/stat.h>
#endif

namespace vok::log {

#ifdef _WIN32

namespace {

std::optional<FileIdentity> identityOfHandle(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION about = {};
    if (GetFileType(file) != FILE_TYPE_DISK || GetFileInformationByHandle(file, &about) == 0) {
        return std::nullopt;
    }
    return FileIdentity(about.dwVolumeSerialNumber,
                        std::uint64_t{about.nFileIndexHigh} << 32 | about.nFileIndexLow);
}

}  // namespace

std::optional<FileIdentity> identityOf(const std::string& path) {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileA(path.c_str(), 0, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    const auto identity = identityOfHandle(file);
    CloseHandle(file);
    return identity;
}

std::optional<FileIdentity> identityOf(int descriptor) {
    return identityOfHandle(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)));
}

#else

namespace {

std::optional<FileIdentity> identityFrom(const struct stat& about) {
    return S_ISREG(about.st_mode) ? std::optional(FileIdentity(about.st_dev, about.st_ino))
                                  : std::nullopt;
}

}  // namespace

std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat about = {};
    return stat(path.c_str(), &about) == 0 ? identityFrom(about) : std::nullopt;
}

std::optional<FileIdentity> identityOf(int descriptor) {
    struct stat about = {};
    return fstat(descriptor, &about) == 0 ? identityFrom(about) : std::nullopt;
}

#endif

}  // namespace vok::log
