// Where the account goes: a file, or the standard output.
#ifndef VOK_LOG_WRITER_H
#define VOK_LOG_WRITER_H

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vok::log {

class OutputError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file is written beside its place and takes it when it is whole; until then, and after a
// failure, what was there stays.
class Writer {
  public:
    static constexpr const char* standardOutput = "-";

    // Throws OutputError, as all of it does.
    explicit Writer(const std::string& path);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void write(std::string_view text);
    // What was written is there for others.
    void flush();
    // Everything is where it belongs once this has returned.
    void close();

  private:
    struct Closer {
        void operator()(std::FILE* file) const;
    };

    [[noreturn]] void fail() const;
    void openBeside();

    std::string path_;
    std::filesystem::path place_;   // empty where the file is written directly
    std::filesystem::path beside_;  // empty once it has taken its place
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace vok::log

#endif
