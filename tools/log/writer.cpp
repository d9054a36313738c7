#include "writer.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace vok::log {

namespace fs = std::filesystem;

Writer::Writer(const std::string& path) : path_(path) {
    std::error_code error;
    if (path == standardOutput) {
#ifdef _WIN32
        _setmode(_fileno(stdout), _O_BINARY);
#endif
        file_ = stdout;
    } else if (fs::exists(path, error) && !fs::is_regular_file(path, error)) {
        file_ = std::fopen(path.c_str(), "wb");  // a device, or a pipe
    } else {
        openBeside();
    }
    if (file_ == nullptr) {
        fail();
    }
}

void Writer::openBeside() {
    // A link stays one.
    std::error_code error;
    const fs::path resolved = fs::canonical(path_, error);
    place_ = error ? fs::path(path_) : resolved;
    beside_ = place_;
    beside_ += ".writing-" + std::to_string(getpid());
    file_ = std::fopen(beside_.string().c_str(), "wbx");
}

Writer::~Writer() {
    if (file_ != nullptr && file_ != stdout) {
        // close() has told of whatever could not be written.
        static_cast<void>(std::fclose(file_));
    }
    if (!beside_.empty()) {
        std::error_code ignored;  // the failure that led here has been told
        fs::remove(beside_, ignored);
    }
}

void Writer::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) {
        fail();
    }
}

void Writer::flush() {
    if (std::fflush(file_) != 0) {
        fail();
    }
}

void Writer::close() {
    flush();
    if (beside_.empty()) {
        return;
    }
    if (std::fclose(std::exchange(file_, nullptr)) != 0) {
        fail();
    }
    std::error_code error;
    if (fs::exists(place_)) {
        fs::permissions(beside_, fs::status(place_).permissions(), error);
    }
    fs::rename(beside_, place_, error);
    if (error) {
        throw std::runtime_error(path_ + ": " + error.message());
    }
    beside_.clear();
}

void Writer::fail() const {
    throw std::runtime_error(path_ + ": " + std::strerror(errno));
}

}  // namespace vok::log
