#include "log_input.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <fcntl.h>
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

#include "text.h"

namespace vok::log {

namespace {

constexpr unsigned decompressionBuffer = 128 * 1024;
// A byte of UTF-16 becomes at most so many of UTF-8; some room is for what was left over.
constexpr std::size_t growth = 4;

gzFile openStandardInput() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    return gzdopen(_dup(_fileno(stdin)), "rb");
#else
    return gzdopen(dup(fileno(stdin)), "rb");
#endif
}

// Who renames or deletes the file meanwhile is not kept from it.
int openShared(const std::string& path) {
#ifdef _WIN32
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file =
        CreateFileA(path.c_str(), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    return file == INVALID_HANDLE_VALUE
               ? _open(path.c_str(), _O_RDONLY | _O_BINARY)  // tells why not
               : _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_RDONLY | _O_BINARY);
#else
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
#endif
}

}  // namespace

struct LogInput::File {
    explicit File(gzFile opened) : handle(opened) {}
    ~File() { gzclose(handle); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    gzFile handle;
};

LogInput::LogInput(const std::string& path, bool growing)
    : path_(path), growing_(growing), buffer_(2 * maxLine) {
    gzFile opened = nullptr;
    if (path == standardInput) {
        opened = openStandardInput();
    } else {
        std::error_code error;
        if (std::filesystem::is_directory(path, error)) {
            throw InputError(path + ": is a folder");
        }
        const std::uintmax_t onDisk = std::filesystem::file_size(path, error);
        size_ = error ? 0 : onDisk;
        const int descriptor = openShared(path);
        if (descriptor >= 0) {
            identity_ = identityOf(descriptor);
            opened = gzdopen(descriptor, "rb");
        }
    }
    if (opened == nullptr) {
        const bool wildcard = path.find_first_of("*?") != std::string::npos;
        throw InputError(path + ": " + (wildcard ? "no file is named so" : std::strerror(errno)));
    }
    file_ = std::make_unique<File>(opened);
    gzbuffer(opened, decompressionBuffer);
    if (growing && (!identity_ || gzdirect(opened) == 0)) {
        throw InputError(
            path + (identity_ ? ": a compressed log doesn't grow" : ": is no file that can grow"));
    }
}

LogInput::~LogInput() = default;

std::uint64_t LogInput::position() const {
    const z_off_t offset = gzoffset(file_->handle);
    return offset < 0 ? 0 : static_cast<std::uint64_t>(offset);
}

bool LogInput::beganAnew() const {
    std::error_code error;
    const std::uintmax_t onDisk = std::filesystem::file_size(path_, error);
    return identityOf(path_) != identity_ || error || onDisk < taken_;
}

// Moves what is left to the front and reads more. False when nothing more came.
bool LogInput::fill() {
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= begin_;
    begin_ = 0;
    if (atEnd_) {
        return false;
    }
    // Little at first: what it becomes as UTF-8 must find room too.
    constexpr std::size_t firstBytes = 4096;
    const std::size_t space = encoding_ == Encoding::Unknown ? firstBytes : buffer_.size() - end_;
    const bool wide = encoding_ == Encoding::Utf16Little || encoding_ == Encoding::Utf16Big;
    raw_.resize(wide ? space / growth : 0);
    const int count = gzread(file_->handle, wide ? raw_.data() : buffer_.data() + end_,
                             static_cast<unsigned>(wide ? raw_.size() : space));
    if (count == 0 && growing_) {
        gzclearerr(file_->handle);
        return false;
    }
    if (count <= 0) {
        atEnd_ = true;
        int error = Z_OK;
        gzerror(file_->handle, &error);
        damaged_ = count < 0 || (error != Z_OK && error != Z_STREAM_END);
        return false;
    }
    const auto got = static_cast<std::size_t>(count);
    taken_ += got;
    if (wide) {
        raw_.resize(got);
        takeRaw();
    } else {
        end_ += got;
        if (encoding_ == Encoding::Unknown) {
            detectEncoding();
        }
    }
    return true;
}

// What was read first says how the rest is to be read.
void LogInput::detectEncoding() {
    const std::string_view text(buffer_.data(), end_);
    const auto zeroAt = [&](std::size_t first) {
        return text.size() >= 4 && text[first] == 0 && text[first + 2] == 0 &&
               text[1 - first] != 0 && text[3 - first] != 0;
    };
    const bool little = text.starts_with("\xFF\xFE") || zeroAt(1);
    const bool big = text.starts_with("\xFE\xFF") || zeroAt(0);
    encoding_ = little ? Encoding::Utf16Little : big ? Encoding::Utf16Big : Encoding::Bytes;
    if (text.starts_with("\xEF\xBB\xBF")) {
        begin_ = 3;
    } else if (little || big) {
        raw_ = text;
        end_ = 0;
        takeRaw();
    }
}

void LogInput::takeRaw() {
    std::string text;
    const std::size_t high = encoding_ == Encoding::Utf16Big ? 0 : 1;
    if (half_) {
        raw_.insert(raw_.begin(), *half_);
    }
    half_ = raw_.size() % 2 == 1 ? std::optional(raw_.back()) : std::nullopt;
    for (std::size_t i = 0; i + 1 < raw_.size(); i += 2) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(raw_[i + at]); };
        appendUtf16(text, static_cast<char16_t>(byte(high) << 8 | byte(1 - high)), surrogate_);
    }
    end_ += text.copy(buffer_.data() + end_, text.size());
}

bool LogInput::hand(InputLine& line, std::size_t length, std::size_t lineEnd, bool whole) {
    line.text = std::string_view(buffer_.data() + begin_, length);
    line.whole = whole;
    if (whole && line.text.ends_with('\r')) {
        line.text.remove_suffix(1);
    }
    begin_ += length + lineEnd;
    return true;
}

bool LogInput::next(InputLine& line) {
    for (;;) {
        const char* first = buffer_.data() + begin_;
        const std::size_t available = end_ - begin_;
        const void* found = std::memchr(first, '\n', available);
        if (found != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(found) - first);
            if (!skipping_) {
                return hand(line, length, 1, true);
            }
            skipping_ = false;
            begin_ += length + 1;
        } else if (skipping_) {
            begin_ = end_;
            if (!fill()) {
                return false;
            }
        } else if (available >= maxLine) {
            skipping_ = true;
            return hand(line, available, 0, false);
        } else if (!fill()) {
            // What remains has no end: the writer was cut off in the middle.
            return !growing_ && end_ > begin_ && hand(line, end_ - begin_, 0, false);
        }
    }
}

}  // namespace vok::log
