#include "log_input.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vok::log {

namespace {

constexpr unsigned decompressionBuffer = 128 * 1024;

gzFile openStandardInput() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    return gzdopen(_dup(_fileno(stdin)), "rb");
#else
    return gzdopen(dup(fileno(stdin)), "rb");
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

LogInput::LogInput(const std::string& path) : buffer_(2 * maxLine) {
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
        opened = gzopen(path.c_str(), "rb");
    }
    if (opened == nullptr) {
        throw InputError(path + ": " + std::strerror(errno));
    }
    file_ = std::make_unique<File>(opened);
    gzbuffer(opened, decompressionBuffer);
}

LogInput::~LogInput() = default;

std::uint64_t LogInput::position() const {
    const z_off_t offset = gzoffset(file_->handle);
    return offset < 0 ? 0 : static_cast<std::uint64_t>(offset);
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
    const int count =
        gzread(file_->handle, buffer_.data() + end_, static_cast<unsigned>(buffer_.size() - end_));
    if (count <= 0) {
        atEnd_ = true;
        int error = Z_OK;
        gzerror(file_->handle, &error);
        damaged_ = count < 0 || (error != Z_OK && error != Z_STREAM_END);
        return false;
    }
    end_ += static_cast<std::size_t>(count);
    return true;
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
            return end_ > begin_ && hand(line, end_ - begin_, 0, false);
        }
    }
}

}  // namespace vok::log
