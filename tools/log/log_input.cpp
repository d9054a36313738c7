#include "log_input.h"

#include <zlib.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <io.h>
#else
#include <sys/stat.h>
#endif

#include "text.h"

namespace vok::log {

namespace {

constexpr unsigned decompressionBuffer = 128 * 1024;

gzFile openStandardInput() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
#endif
    return gzdopen(dup(fileno(stdin)), "rb");
}

#ifdef _WIN32

// Who renames or deletes the file meanwhile is not kept from it.
HANDLE handleOf(const std::string& path, DWORD access) {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return CreateFileA(path.c_str(), access, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
}

int openShared(const std::string& path) {
    const HANDLE file = handleOf(path, GENERIC_READ);
    return file == INVALID_HANDLE_VALUE
               ? _open(path.c_str(), _O_RDONLY | _O_BINARY)  // tells why not
               : _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_RDONLY | _O_BINARY);
}

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
    const HANDLE file = handleOf(path, 0);
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

int openShared(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

std::optional<FileIdentity> identityFrom(int result, const struct stat& about) {
    return result == 0 && S_ISREG(about.st_mode)
               ? std::optional(FileIdentity(about.st_dev, about.st_ino))
               : std::nullopt;
}

}  // namespace

std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat about = {};
    return identityFrom(stat(path.c_str(), &about), about);
}

std::optional<FileIdentity> identityOf(int descriptor) {
    struct stat about = {};
    return identityFrom(fstat(descriptor, &about), about);
}

#endif

LogInput::LogInput(const std::string& path, bool growing)
    : path_(path), growing_(growing), file_(nullptr, gzclose) {
    if (path == standardInput) {
        file_.reset(openStandardInput());
    } else {
        std::error_code error;
        if (std::filesystem::is_directory(path, error)) {
            throw std::runtime_error(path + ": is a folder");
        }
        const std::uintmax_t onDisk = std::filesystem::file_size(path, error);
        size_ = error ? 0 : onDisk;
        const int descriptor = openShared(path);
        if (descriptor >= 0) {
            identity_ = identityOf(descriptor);
            file_.reset(gzdopen(descriptor, "rb"));
        }
    }
    if (file_ == nullptr) {
        const bool wildcard = path.find_first_of("*?") != std::string::npos;
        throw std::runtime_error(path + ": " +
                                 (wildcard ? "no file is named so" : std::strerror(errno)));
    }
    gzbuffer(file_.get(), decompressionBuffer);
    if (growing && (!identity_ || gzdirect(file_.get()) == 0)) {
        throw std::runtime_error(
            path + (identity_ ? ": a compressed log doesn't grow" : ": is no file that can grow"));
    }
}

std::uint64_t LogInput::position() const {
    const z_off_t offset = gzoffset(file_.get());
    return offset < 0 ? 0 : static_cast<std::uint64_t>(offset);
}

bool LogInput::beganAnew() const {
    std::error_code error;
    const std::uintmax_t onDisk = std::filesystem::file_size(path_, error);
    return identityOf(path_) != identity_ || error || onDisk < taken_;
}

// Drops what was handed out and reads more. False when nothing more came.
bool LogInput::fill() {
    text_.erase(0, std::exchange(begin_, 0));
    if (atEnd_) {
        return false;
    }
    raw_.resize(2 * maxLine - std::min(text_.size(), maxLine));
    const int count = gzread(file_.get(), raw_.data(), static_cast<unsigned>(raw_.size()));
    if (count == 0 && growing_) {
        gzclearerr(file_.get());
        return false;
    }
    if (count <= 0) {
        atEnd_ = true;
        int error = Z_OK;
        gzerror(file_.get(), &error);
        damaged_ = count < 0 || (error != Z_OK && error != Z_STREAM_END);
        return false;
    }
    taken_ += static_cast<unsigned>(count);
    take(std::string_view(raw_).substr(0, static_cast<std::size_t>(count)));
    return true;
}

// What was read first says how the rest is to be read.
void LogInput::take(std::string_view raw) {
    if (encoding_ == Encoding::Unknown) {
        const auto zeroAt = [&](std::size_t first) {
            return raw.size() >= 4 && raw[first] == 0 && raw[first + 2] == 0 &&
                   raw[1 - first] != 0 && raw[3 - first] != 0;
        };
        const bool little = raw.starts_with("\xFF\xFE") || zeroAt(1);
        const bool big = raw.starts_with("\xFE\xFF") || zeroAt(0);
        encoding_ = little ? Encoding::Utf16Little : big ? Encoding::Utf16Big : Encoding::Bytes;
        raw.remove_prefix(raw.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    }
    if (encoding_ == Encoding::Bytes) {
        text_ += raw;
        return;
    }
    for (const char character : raw) {
        const auto byte = static_cast<unsigned char>(character);
        if (!half_) {
            half_ = byte;
            continue;
        }
        const bool big = encoding_ == Encoding::Utf16Big;
        const int unit = big ? *half_ << 8 | byte : byte << 8 | *half_;
        appendUtf16(text_, static_cast<char16_t>(unit), surrogate_);
        half_.reset();
    }
}

InputLine LogInput::hand(std::size_t length, bool whole) {
    InputLine line{std::string_view(text_).substr(begin_, length), whole};
    if (whole && line.text.ends_with('\r')) {
        line.text.remove_suffix(1);
    }
    begin_ += length + (whole ? 1 : 0);
    return line;
}

std::optional<InputLine> LogInput::next() {
    for (;;) {
        const std::size_t end = text_.find('\n', begin_);
        const std::size_t available = text_.size() - begin_;
        if (end != std::string::npos) {
            if (!std::exchange(skipping_, false)) {
                return hand(end - begin_, true);
            }
            begin_ = end + 1;
        } else if (skipping_) {
            begin_ = text_.size();
            if (!fill()) {
                return std::nullopt;
            }
        } else if (available >= maxLine) {
            skipping_ = true;
            return hand(available, false);
        } else if (!fill()) {
            // What remains has no end: the writer was cut off in the middle.
            const bool cut = !growing_ && text_.size() > begin_;
            return cut ? std::optional(hand(text_.size() - begin_, false)) : std::nullopt;
        }
    }
}

}  // namespace vok::log
