// Where the account goes: a file, or the standard output.
#ifndef VOK_LOG_WRITER_H
#define VOK_LOG_WRITER_H

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vok::log {

class OutputError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Writer {
  public:
    static constexpr const char* standardOutput = "-";

    // Throws OutputError, as all of it does.
    explicit Writer(const std::string& path);

    void write(std::string_view text);
    // Everything is where it belongs once this has returned.
    void close();

  private:
    struct Closer {
        void operator()(std::FILE* file) const;
    };

    [[noreturn]] void fail() const;

    std::string path_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace vok::log

#endif
