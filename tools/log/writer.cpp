#include "writer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace vok::log {

void Writer::Closer::operator()(std::FILE* file) const {
    if (file != stdout) {
        // close() has told of whatever could not be written.
        static_cast<void>(std::fclose(file));
    }
}

Writer::Writer(const std::string& path) : path_(path) {
    if (path == standardOutput) {
#ifdef _WIN32
        _setmode(_fileno(stdout), _O_BINARY);
#endif
        file_.reset(stdout);
    } else {
        file_.reset(std::fopen(path.c_str(), "wb"));
    }
    if (file_ == nullptr) {
        fail();
    }
}

void Writer::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
        fail();
    }
}

void Writer::close() {
    if (std::fflush(file_.get()) != 0) {
        fail();
    }
}

void Writer::fail() const {
    throw OutputError(path_ + ": " + std::strerror(errno));
}

}  // namespace vok::log
